#include "front/windows/bench.h"

#include <algorithm>
#include <span>
#include <utility>

#include "front/windows/bench_page.h"
#include "front/windows/sleeper.h"
#include "front/windows/sound_writer.h"
#include "front/windows/text.h"

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

std::string NameOf(WaveDirection direction) {
    return direction == WaveDirection::Out ? "output " : "input ";
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
    if (!bench->BeginTrace(why) || !bench->BeginPage(why) || !bench->PlugEverythingIn(why)) {
        return nullptr;
    }
    bench->SendRequests();
    for (const simulator::Fault& fault : bench->environment_.Faults) {
        bench->cards_.AddFault(fault);
    }
    return bench;
}

bool Bench::BeginTrace(std::string* why) {
    if (environment_.Trace.empty()) {
        return true;
    }
    traceFile_.open(environment_.Trace.c_str(), std::ios::binary);
    trace_.emplace(traceFile_);
    *why = "cannot write " + Utf8(environment_.Trace);
    return traceFile_.good();
}

bool Bench::BeginPage(std::string* why) {
    if (environment_.Report.empty()) {
        return true;
    }
    page_ = std::make_unique<BenchPage>(cards_, environment_.Report);
    *why = "cannot write " + Utf8(environment_.Report);
    return page_->CanBeWritten();
}

void Bench::SendRequests() {
    if (!trace_ && !page_) {
        return;
    }
    cards_.SendTrace([this](const simulator::TraceEntry& entry) {
        if (trace_) {
            const std::lock_guard hold(traceLock_);
            trace_->Write(entry);
        }
        if (page_) {
            page_->Take(entry);
        }
    });
}

// What is plugged into a connector later takes the place of what was there.
bool Bench::PlugEverythingIn(std::string* why) {
    const unsigned count = cards_.CardCount();
    const auto isThere = [&](unsigned card, const std::string& source) {
        *why = source + " speaks of card " + std::to_string(card) + ", and the cards end with " +
               std::to_string(count - 1);
        return card < count;
    };
    for (const PluggedInput& input : environment_.Inputs) {
        if (input.Where && !isThere(input.Where->Card, input.Source)) {
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
    for (const auto& [ends, source] : environment_.Cables) {
        const auto& [output, input] = ends;
        if (!isThere(std::max(output.Card, input.Card), source)) {
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

void Bench::Opened(WaveDirection direction, UINT device, const WAVEFORMATEX& format) {
    const auto [card, port] = ConnectorOf(device);
    const std::lock_guard hold(lock_);
    const Run& run = open_[{direction, device}] = Begin(direction, device);
    if (page_) {
        page_->Opened(direction, device, NameOf(direction) + run.Name, format);
    }
    if (sleeper_) {
        sleeper_->Watch(direction, card, port);
    }
}

void Bench::Closed(WaveDirection direction, UINT device) {
    const std::lock_guard hold(lock_);
    if (auto open = open_.extract({direction, device})) {
        End(direction, device, open.mapped());
    }
}

void Bench::Header(host::HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header) {
    const std::lock_guard hold(lock_);
    if (trace_) {
        TraceHeader(event, direction, device, header);
    }
    if (page_) {
        page_->Header(event, direction, device, header);
    }
}

void Bench::Reset(WaveDirection direction, UINT device) {
    const std::lock_guard hold(lock_);
    if (page_) {
        page_->Reset(direction, device);
    }
}

void Bench::TraceHeader(host::HeaderEvent event, WaveDirection direction, UINT device,
                        const WAVEHDR* header) {
    using Kind = simulator::HeaderEvent::Kind;
    constexpr Kind Kinds[] = {Kind::Queued, Kind::Taken, Kind::Refused,
                              Kind::Returned};  // by host::HeaderEvent
    const auto [card, port] = ConnectorOf(device);
    const uint32_t channel =
        direction == WaveDirection::Out ? simulator::OutputChannel(port) : simulator::InputChannel(port);
    const simulator::HeaderEvent noted =
        cards_.NoteHeader(Kinds[static_cast<int>(event)], card, channel, header);
    const std::lock_guard hold(traceLock_);
    trace_->Write(noted);
}

Bench::Run Bench::Begin(WaveDirection direction, UINT device) {
    Run run{.Name = NameOf(device) + "-" + std::to_string(++runs_[{direction, device}]),
            .Rate = cards_.SampleRate(ConnectorOf(device).Card),
            .Capture = nullptr};
    if (direction == WaveDirection::Out && !environment_.Capture.empty()) {
        BeginCapture(run, device);
    }
    return run;
}

void Bench::BeginCapture(Run& run, UINT device) {
    const auto [card, port] = ConnectorOf(device);
    run.Capture = std::make_unique<SoundWriter>(CapturePath(run.Name), run.Rate);
    cards_.SendHeard(card, port, [writer = run.Capture.get()](std::span<const simulator::Frame> frames) {
        writer->Write(frames);
    });
}

void Bench::End(WaveDirection direction, UINT device, Run& run) {
    if (direction == WaveDirection::Out) {
        EndOutput(device, run);
    } else {
        EndInput(device, run);
    }
    if (page_) {
        page_->Closed(direction, device);
    }
}

std::wstring Bench::CapturePath(const std::string& name) const {
    std::wstring path = environment_.Capture;
    return path.replace(path.find(L'*'), 1, Wide(name));
}

void Bench::EndInput(UINT device, const Run& run) {
    const auto [card, port] = ConnectorOf(device);
    const simulator::InputStatus status = cards_.Input(card, port);
    TellDebugger("input " + run.Name + ": " + Counted(status.FramesRecorded, "frames recorded, ") +
                 Counted(status.FramesDropped, "dropped between them"));
}

void Bench::EndOutput(UINT device, Run& run) {
    const auto [card, port] = ConnectorOf(device);
    const simulator::OutputStatus status = cards_.Output(card, port);
    TellDebugger("output " + run.Name + ": " + Counted(status.FramesPlayed, "frames played at ") +
                 Counted(run.Rate, "Hz, ") + Counted(status.FramesSilent, "silent between them"));
    if (run.Capture) {
        cards_.SendHeard(card, port, {});
        if (!run.Capture->Finish()) {
            TellDebugger("cannot write all of " + Utf8(CapturePath(run.Name)));
        }
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
    for (auto& [key, run] : open_) {
        End(key.first, key.second, run);
    }
    open_.clear();
    cards_.SendTrace({});
    EndTrace();
    EndPage();
}

void Bench::EndTrace() {
    if (!trace_) {
        return;
    }
    trace_->Finish();
    trace_.reset();
    traceFile_.close();
    if (!traceFile_) {
        TellDebugger("cannot write all of " + Utf8(environment_.Trace));
    }
}

void Bench::EndPage() {
    if (page_ && !page_->Finish()) {
        TellDebugger("cannot write all of " + Utf8(environment_.Report));
    }
    page_.reset();
}

}  // namespace front
