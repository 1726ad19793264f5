#include "tools/streams/progress_line.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/machine/host.h"

namespace kestvox {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto Period = std::chrono::milliseconds(100);

template <typename... Values>
std::string Print(const char* format, Values... values) {
    char text[80];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string Duration(double seconds) {
    const auto whole = static_cast<unsigned long long>(std::llround(seconds));
    return whole < 3600 ? Print("%llu:%02llu", whole / 60, whole % 60)
                        : Print("%llu:%02llu:%02llu", whole / 3600, whole / 60 % 60, whole % 60);
}

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

}  // namespace

std::string ProgressText(const Progress& progress, double elapsedSeconds, unsigned width) {
    const double at =
        progress.TotalSeconds ? std::min(progress.Seconds, *progress.TotalSeconds) : progress.Seconds;
    const double speed = elapsedSeconds > 0 ? at / elapsedSeconds : 0;
    std::string text = Print("%.1f", at);
    text += progress.TotalSeconds ? Print(" of %.1f s", *progress.TotalSeconds) : " s";
    std::string parts[4];
    parts[0] = Print("%.*f x", speed < 10 ? 1 : 0, speed);
    parts[1] =
        progress.TotalSeconds && speed > 0 ? Duration((*progress.TotalSeconds - at) / speed) + " left" : "";
    parts[2] = Print("%u in flight", progress.BuffersInFlight);
    parts[3] = progress.Decibels ? Print("%.0f dB", *progress.Decibels) : "";
    for (const std::string& part : parts) {
        if (!part.empty() && text.size() + 2 + part.size() >= width) {
            break;
        }
        text += part.empty() ? "" : ", " + part;
    }
    return text.substr(0, width > 0 ? width - 1 : 0);
}

ProgressLine::ProgressLine(bool wanted) : wanted_(wanted && TerminalWidth() > 0) {}

bool ProgressLine::IsDue() const {
    return wanted_ && (!shown_ || Clock::now() - *shown_ >= Period);
}

void ProgressLine::Show(const Progress& progress) {
    const std::string text = ProgressText(progress, SecondsSince(begun_), TerminalWidth());
    shown_ = Clock::now();
    const size_t rest = columns_ > text.size() ? columns_ - text.size() : 0;
    std::fprintf(stderr, "\r%s%*s", text.c_str(), static_cast<int>(rest), "");
    std::fflush(stderr);
    columns_ = text.size();
}

void ProgressLine::Wipe() {
    if (columns_ > 0) {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(columns_), "");
        std::fflush(stderr);
        columns_ = 0;
    }
}

}  // namespace kestvox
