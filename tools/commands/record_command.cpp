#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <utility>

#include "report/wave_format.h"
#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/commands/stream_command.h"
#include "tools/files/output_file.h"
#include "tools/streams/cable_feed.h"
#include "tools/streams/input_feed.h"
#include "tools/streams/plugged_inputs.h"
#include "tools/streams/recording_file.h"
#include "tools/streams/wave_input.h"
#include "tools/system/message.h"

namespace kestvox {
namespace {

constexpr double DefaultSeconds = 5;
constexpr DWORD DefaultRate = 44100;
constexpr unsigned DefaultChannels = 2;
constexpr const char* Silence = "silence";
constexpr const char* TonePrefix = "tone:";
constexpr const char* CablePrefix = "cable:";

constexpr SampleEncoding Formats[] = {
    {"u8", WAVE_FORMAT_PCM, 8, 1, 0},   {"s16", WAVE_FORMAT_PCM, 16, 2, 0},
    {"s20", WAVE_FORMAT_PCM, 20, 3, 0}, {"s24", WAVE_FORMAT_PCM, 24, 3, 0},
    {"s32", WAVE_FORMAT_PCM, 32, 4, 0}, {"s24in32", WAVE_FORMAT_EXTENSIBLE, 32, 4, 24},
};

WAVEFORMATEXTENSIBLE RecordingFormat(const RecordOptions& options) {
    const auto* encoding = std::ranges::find_if(
        Formats, [&](const SampleEncoding& known) { return options.Format == known.Name; });
    if (encoding == std::end(Formats)) {
        throw CommandError("format " + options.Format + ": there is no such format");
    }
    return MakeFormat(*encoding, static_cast<WORD>(options.Channels), options.Rate);
}

// What is plugged in, when that is no file.
simulator::InputSignal GeneratedSignal(const std::string& input) {
    std::optional<simulator::InputSignal> signal = simulator::ParseSignal(input);
    if (!signal) {
        throw CommandError("input " + input + ": must be tone:HZ, with a frequency above 0");
    }
    return std::move(*signal);
}

bool IsCable(const std::string& input) {
    return input.starts_with(CablePrefix);
}

bool IsFile(const std::string& input) {
    return !input.empty() && input != Silence && !input.starts_with(TonePrefix) && !IsCable(input);
}

// Another program's, at the other end of the cable.
simulator::Connector OutputOf(const std::string& input) {
    const auto output = simulator::ParseConnector(input.substr(std::string(CablePrefix).size()));
    if (!output) {
        throw CommandError(
            "input " + input +
            ": must be cable:OUTPUT, a card's number with a (analog) or d (digital): cable:0a");
    }
    return *output;
}

void RequireRate(const InputFeed& feed, const RecordOptions& options) {
    if (const DWORD rate = feed.Format().nSamplesPerSec; rate != options.Rate) {
        throw CommandError(options.Input + ": has " + std::to_string(rate) + " Hz, the recording " +
                           std::to_string(options.Rate) +
                           " Hz; a file with the recording's rate can be plugged in");
    }
}

// Nothing: as many as the pipe or the cable that is plugged in brings.
std::optional<uint64_t> FramesToRecord(const RecordOptions& options, const InputFeed* feed) {
    if (!options.Seconds && feed) {
        return feed->FrameCount();
    }
    if (!options.Seconds && IsCable(options.Input)) {
        return std::nullopt;
    }
    return std::max<uint64_t>(1,
                              static_cast<uint64_t>(options.Seconds.value_or(DefaultSeconds) * options.Rate));
}

// Ends a recording with what is plugged in: a pipe, or a cable.
template <typename Feed>
class EndOfFeed final : public SideWork {
public:
    EndOfFeed(const Feed& feed, WaveInput& input) : feed_(feed), input_(input) {}
    void Advance() override {
        if (const std::optional<uint64_t> frames = feed_.FrameCount(); frames && !told_) {
            told_ = true;
            input_.SetFrameCount(std::max<uint64_t>(*frames, 1));
        }
    }
    std::string Problem() const override { return {}; }

private:
    const Feed& feed_;
    WaveInput& input_;
    bool told_ = false;
};

// What the card may take between two looks of the program at its work, and as much again.
size_t ReadAheadFrames(const RecordOptions& options) {
    return static_cast<size_t>(uint64_t{options.Rate} * (1000 + 2 * options.BufferMilliseconds) / 1000);
}

// What was not asked for is as in the file that is plugged in.
RecordOptions FilledIn(RecordOptions options, const InputFeed* feed) {
    if (options.Rate == 0) {
        options.Rate = feed ? feed->Format().nSamplesPerSec : DefaultRate;
    }
    if (options.Channels == 0) {
        options.Channels = feed ? feed->Format().nChannels : DefaultChannels;
    }
    return options;
}

// Without an option of its own the device has what the scene plugs into it.
RecordOptions WithInputOfScene(RecordOptions options) {
    if (options.Input.empty() && !HasCable(options.Scene, options.Device)) {
        options.Input = PluggedIntoDevice(options.Scene, options.Device).value_or(Silence);
    }
    return options;
}

RecordOptions WithDitherStored(RecordOptions options) {
    if (options.Dither) {
        options.Scene.Settings.push_back(std::to_string(options.Device / 2) +
                                         ":DitherADC=" + std::to_string(*options.Dither));
    }
    return options;
}

}  // namespace

int Record(const RecordOptions& given) {
    const RecordOptions asked = WithInputOfScene(given);
    FileRoles roles{.Read = {}, .Written = {{"FILE", asked.File}}};
    if (IsFile(asked.Input)) {
        roles.Read.push_back({"--input", asked.Input});
    }
    RequireDifferentFiles(roles, asked);
    const std::unique_ptr<InputFeed> feed =
        IsFile(asked.Input) ? std::make_unique<InputFeed>(asked.Input) : nullptr;
    const RecordOptions options = FilledIn(WithDitherStored(asked), feed.get());
    const WAVEFORMATEXTENSIBLE format = RecordingFormat(options);
    if (feed) {
        RequireRate(*feed, options);
        if (const std::string note = feed->ConversionNote(); !note.empty()) {
            PrintNote(note);
        }
        feed->SetReadAhead(ReadAheadFrames(options));
    }
    const std::optional<simulator::Connector> output =
        IsCable(options.Input) ? std::optional(OutputOf(options.Input)) : std::nullopt;
    std::optional<simulator::InputSignal> signal;  // nothing: a cable is plugged in
    if (!options.Input.empty() && !output) {
        signal = feed ? feed->Signal() : GeneratedSignal(options.Input);
    }
    const std::optional<uint64_t> frames = FramesToRecord(options, feed.get());
    RecordingFile file(options.File, format.Format);

    return RunStreams(
        "record", options, roles, [&](Scene& scene, StreamRunner& runner, Outcome& outcome, PageFile* page) {
            const CableFeed* cable = nullptr;
            if (output) {
                auto made =
                    std::make_unique<CableFeed>(scene, *output, options.Rate, "input " + options.Input);
                cable = made.get();
                signal = made->Signal();
                runner.Add(std::move(made));
            }
            if (signal) {
                scene.PlugIn(options.Device, std::move(*signal));
            }
            auto owned = std::make_unique<WaveInput>(options.Device, format.Format, runner.BufferBack(),
                                                     [&](std::span<const char> bytes) { file.Write(bytes); });
            WaveInput& input = *owned;
            if (page) {
                page->Watch(input);
            }
            input.PrepareBuffers(options.Buffers, options.BufferMilliseconds);
            input.SetFrameCount(frames.value_or(WaveInput::Endless));
            runner.Add(std::move(owned));
            runner.Add(file);
            if (feed) {
                runner.Add(*feed);
            }
            if (!frames && feed) {
                runner.Add(std::make_unique<EndOfFeed<InputFeed>>(*feed, input));
            } else if (!frames) {
                runner.Add(std::make_unique<EndOfFeed<CableFeed>>(*cable, input));
            }
            runner.Start();
            runner.RunToTheEnd();
            runner.Close();

            file.Finish();
            StreamRunner::Report report = runner.Reports().front();
            report.Status.Frames = input.FramesTaken();
            AddStream(outcome, options.Device, StreamKind::Recording, report, scene.HasSimulator());
            if (cable && !cable->Loss().empty()) {
                outcome.Run.Losses.push_back("device " + std::to_string(options.Device) + ": " +
                                             cable->Loss());
            }
        });
}

std::vector<std::string> RecordFormats() {
    std::vector<std::string> names;
    for (const SampleEncoding& format : Formats) {
        names.emplace_back(format.Name);
    }
    return names;
}

}  // namespace kestvox
