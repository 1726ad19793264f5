#include "front/windows/bench_page.h"

#include <span>

#include "front/windows/text.h"
#include "report/gap_report.h"

namespace front {

namespace {

using kestvox::StreamKind;

// A program may open its device for every sound.
constexpr size_t MostPictures = 32;
constexpr unsigned MostFacts = 1000;

simulator::Port PortOf(UINT device) {
    return device % 2 ? simulator::Port::Digital : simulator::Port::Analog;
}

std::string ProgramName() {
    WCHAR path[MAX_PATH + 1] = {};
    const std::wstring whole(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return Utf8(whole.substr(whole.find_last_of(L'\\') + 1));
}

// A client that looks at its header's flags may have taken it away by now.
std::span<const char> Recorded(const WAVEHDR* header) {
    if (IsBadReadPtr(header, sizeof *header) || IsBadReadPtr(header->lpData, header->dwBytesRecorded)) {
        return {};
    }
    return {header->lpData, header->dwBytesRecorded};
}

}  // namespace

BenchPage::BenchPage(simulator::Simulator& cards, const std::wstring& path)
    : cards_(cards), file_(path.c_str(), std::ios::binary), page_(cards) {}

void BenchPage::Opened(WaveDirection direction, UINT device, const std::string& name,
                       const WAVEFORMATEX& format) {
    Stream& stream = open_[{direction, device}];
    const bool playing = direction == WaveDirection::Out;
    stream = {name, nullptr};
    if (page_.StreamCount() < MostPictures) {
        stream.Watch = &page_.Watch({.Name = name,
                                     .Device = device,
                                     .Kind = playing ? StreamKind::Playing : StreamKind::Recording,
                                     .Format = &format,
                                     .Compares = playing});
    } else {
        ++withoutPicture_;
    }
}

kestvox::StreamWatch* BenchPage::WatchOf(WaveDirection direction, UINT device) {
    const auto found = open_.find({direction, device});
    return found == open_.end() ? nullptr : found->second.Watch;
}

void BenchPage::Header(host::HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header) {
    kestvox::StreamWatch* const watch = WatchOf(direction, device);
    if (!watch) {
        return;
    }
    if (direction == WaveDirection::In && event == host::HeaderEvent::Returned) {
        watch->AddRecorded(Recorded(header));
    } else if (direction == WaveDirection::Out && event == host::HeaderEvent::Queued) {
        Queued(*watch, *header);
    } else if (event == host::HeaderEvent::Refused) {
        watch->GiveUpComparison();
    }
    page_.Advance();
}

void BenchPage::Reset(WaveDirection direction, UINT device) {
    kestvox::StreamWatch* const watch = WatchOf(direction, device);
    if (watch && direction == WaveDirection::Out) {
        watch->TakeBack();
    }
}

// How often a loop is played is known when it is over.
void BenchPage::Queued(kestvox::StreamWatch& watch, const WAVEHDR& header) {
    if (header.dwFlags & (WHDR_BEGINLOOP | WHDR_ENDLOOP)) {
        watch.GiveUpComparison();
    }
    watch.Ask({header.lpData, header.dwBufferLength});
}

void BenchPage::Closed(WaveDirection direction, UINT device) {
    const auto found = open_.find({direction, device});
    if (found == open_.end()) {
        return;
    }
    if (found->second.Watch) {
        found->second.Watch->Close();
    }
    AddFacts(found->second, direction, device);
    open_.erase(found);
}

void BenchPage::AddFacts(const Stream& stream, WaveDirection direction, UINT device) {
    if (report_.StreamCount() >= MostFacts) {
        return;
    }
    const unsigned card = device / 2;
    report_.BeginStream();
    report_.Add("stream", stream.Name);
    if (direction == WaveDirection::Out) {
        const simulator::OutputStatus status = cards_.Output(card, PortOf(device));
        report_.Add("frames-played", status.FramesPlayed);
        report_.Add("most-in-flight", status.MostInFlight);
        report_.Add("silent-frames", status.FramesSilent);
        AddGaps(report_, outcome_.Losses, stream.Name, StreamKind::Playing, status.FramesSilent,
                status.Underruns);
        AddDifferences(stream);
    } else {
        const simulator::InputStatus status = cards_.Input(card, PortOf(device));
        report_.Add("frames-recorded", status.FramesRecorded);
        report_.Add("most-in-flight", status.MostInFlight);
        report_.Add("dropped-frames", status.FramesDropped);
        AddGaps(report_, outcome_.Losses, stream.Name, StreamKind::Recording, status.FramesDropped,
                status.Overruns);
    }
    report_.EndStreams();
}

void BenchPage::AddDifferences(const Stream& stream) {
    const std::optional<uint64_t> differences = stream.Watch ? stream.Watch->Differences() : std::nullopt;
    if (!differences) {
        return;
    }
    report_.Add("frames-not-as-written", *differences);
    if (*differences > 0) {
        outcome_.Losses.push_back(stream.Name + ": " + kestvox::Counted(*differences, "frame") +
                                  " did not come as written");
    }
}

bool BenchPage::Finish() {
    const std::string program = ProgramName();
    page_.End();
    report_.Add("program", program);
    report_.Add("requests-sent", cards_.RequestCount());
    if (withoutPicture_ > 0) {
        report_.Add("streams-without-picture", withoutPicture_);
    }
    file_ << page_.Text(program, outcome_, report_);
    file_.close();
    return file_.good();
}

}  // namespace front
