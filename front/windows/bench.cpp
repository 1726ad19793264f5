#include "front/windows/bench.h"

#include <algorithm>
#include <fstream>
#include <span>
#include <utility>

#include "front/windows/sleeper.h"
#include "front/windows/sound_frames.h"
#include "front/windows/text.h"
#include "simulator/trace/trace.h"

namespace front {

namespace {

using simulator::Connector;
using simulator::Port;

Connector ConnectorOf(UINT device) {
    return {device / 2, device % 2 ? Port::Digital : Port::Analog};
}

// "0a", as a user writes it.
std::string NameOf(UINT device) {
    return std::to_string(device / 2) + (device % 2 ? "d" : "a");
}

std::string Counted(uint64_t count, const char* what) {
    return std::to_string(count) + " " + what;
}

}  // namespace

Bench::Bench(Environment environment)
    : environment_(std::move(environment)),
      cards_({.Cards = environment_.Cards, .Time = environment_.Time}),
      sleeper_(environment_.SuspendAt ? std::make_unique<Sleeper>(cards_, *environment_.SuspendAt)
                                      : nullptr) {}

Bench::~Bench() = default;

std::unique_ptr<Bench> Bench::PutUp(Environment environment, std::string* why) {
    std::unique_ptr<Bench> bench(new Bench(std::move(environment)));
    if (!bench->PlugEverythingIn(why)) {
        return nullptr;
    }
    for (const simulator::Fault& fault : bench->environment_.Faults) {
        bench->cards_.AddFault(fault);
    }
    return bench;
}

// What is plugged into a connector later takes the place of what was there.
bool Bench::PlugEverythingIn(std::string* why) {
    const unsigned count = cards_.CardCount();
    const auto isThere = [&](unsigned card, const char* variable) {
        *why = std::string(variable) + " speaks of card " + std::to_string(card) +
               ", and the cards end with " + std::to_string(count - 1);
        return card < count;
    };
    for (const PluggedInput& input : environment_.Inputs) {
        if (input.Where && !isThere(input.Where->Card, "KESTVOX_INPUT")) {
            return false;
        }
        for (UINT device = 0; device < 2 * count; ++device) {
            const Connector connector = ConnectorOf(device);
            if (!input.Where ||
                (input.Where->Card == connector.Card && input.Where->Port == connector.Port)) {
                PlugIn(input, connector);
            }
        }
    }
    for (const auto& [output, input] : environment_.Cables) {
        if (!isThere(std::max(output.Card, input.Card), "KESTVOX_CABLE")) {
            return false;
        }
        cards_.PlugIn(input.Card, input.Port, simulator::InputSignal::Cable(output.Card, output.Port));
    }
    return true;
}

void Bench::PlugIn(const PluggedInput& input, Connector where) {
    simulator::InputSignal signal = input.Signal;
    if (where.Port == Port::Digital && input.FileRate != 0) {
        signal = std::move(signal).At(input.FileRate);
    }
    cards_.PlugIn(where.Card, where.Port, std::move(signal));
}

void Bench::Opened(WaveDirection direction, UINT device) {
    const auto [card, port] = ConnectorOf(device);
    const std::lock_guard hold(lock_);
    if (direction == WaveDirection::Out) {
        const size_t begin = environment_.Capture.empty() ? 0 : cards_.Heard(card, port).size();
        outputs_[device] = {.Begin = begin, .Rate = cards_.SampleRate(card)};
    }
    if (sleeper_) {
        sleeper_->Watch(direction, card, port);
    }
}

void Bench::Closed(WaveDirection direction, UINT device) {
    const std::lock_guard hold(lock_);
    if (direction == WaveDirection::In) {
        EndInput(device);
    } else if (const auto open = outputs_.extract(device)) {
        EndOutput(device, open.mapped());
    }
}

void Bench::EndInput(UINT device) {
    const auto [card, port] = ConnectorOf(device);
    const simulator::InputStatus status = cards_.Input(card, port);
    TellDebugger("input " + NameOf(device) + ": " + Counted(status.FramesRecorded, "frames recorded, ") +
                 Counted(status.FramesDropped, "dropped between them"));
}

void Bench::EndOutput(UINT device, const Run& run) {
    const auto [card, port] = ConnectorOf(device);
    const simulator::OutputStatus status = cards_.Output(card, port);
    const std::string name = NameOf(device) + "-" + std::to_string(++runs_[device]);
    TellDebugger("output " + name + ": " + Counted(status.FramesPlayed, "frames played at ") +
                 Counted(run.Rate, "Hz, ") + Counted(status.FramesSilent, "silent between them"));
    if (environment_.Capture.empty()) {
        return;
    }
    std::wstring path = environment_.Capture;
    path.replace(path.find(L'*'), 1, Wide(name));
    std::vector<simulator::Frame> heard = cards_.Heard(card, port);
    heard.erase(heard.begin(),
                heard.begin() + static_cast<std::ptrdiff_t>(std::min(run.Begin, heard.size())));
    if (!WriteSoundFrames(path.c_str(), {run.Rate, std::move(heard)})) {
        TellDebugger("cannot write " + Utf8(path));
    }
}

void Bench::Refused(WaveDirection direction, UINT device) {
    const auto [card, port] = ConnectorOf(device);
    if (direction == WaveDirection::In && port == Port::Digital && cards_.DigitalInput(card).Rate == 0) {
        TellDebugger("input " + NameOf(device) +
                     " has no signal: KESTVOX_INPUT or KESTVOX_CABLE plugs one in, and with the setting "
                     "CheckClocks=0 the input opens without");
    }
}

void Bench::Finish() {
    const std::lock_guard hold(lock_);
    for (const auto& [device, run] : std::exchange(outputs_, {})) {
        EndOutput(device, run);
    }
    WriteTrace();
}

void Bench::WriteTrace() {
    if (environment_.Trace.empty()) {
        return;
    }
    std::ofstream file(environment_.Trace.c_str(), std::ios::binary);
    simulator::WriteChromeTrace(file, cards_.Trace());
    file.close();
    if (!file) {
        TellDebugger("cannot write " + Utf8(environment_.Trace));
    }
}

}  // namespace front
