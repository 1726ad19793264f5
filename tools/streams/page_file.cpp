#include "tools/streams/page_file.h"

namespace kestvox {

StreamWatch& PageFile::WatchStream(const WaveStream& stream, StreamKind kind, bool compares, bool repeats) {
    return page_->Watch({.Name = "Device " + std::to_string(stream.Device()),
                         .Device = stream.Device(),
                         .Kind = kind,
                         .Format = &stream.Format(),
                         .Compares = compares,
                         .Repeats = repeats});
}

void PageFile::Watch(WaveOutput& stream, bool repeats) {
    StreamWatch& watch = WatchStream(stream, StreamKind::Playing, true, repeats);
    stream.SendSamples([&watch](std::span<const char> bytes) { watch.Ask(bytes); });
}

void PageFile::Watch(WaveInput& stream) {
    StreamWatch& watch = WatchStream(stream, StreamKind::Recording, false, false);
    stream.SendSamples([&watch](std::span<const char> bytes) { watch.AddRecorded(bytes); });
}

void PageFile::Watch(WaveInput& stream, LoopbackComparison& comparison) {
    StreamWatch& watch = WatchStream(stream, StreamKind::Recording, true, false);
    stream.SendSamples([&watch](std::span<const char>) { watch.Advance(); });
    comparison.SendCompared([&watch](std::span<const char> played, std::span<const char> recorded) {
        watch.AddReturned(played, recorded);
    });
}

void PageFile::Finish(const RunOutcome& outcome, const Report& report) {
    file_.Write(page_->Text(outcome.Command.value_or(""), outcome, report));
    file_.Commit();
}

}  // namespace kestvox
