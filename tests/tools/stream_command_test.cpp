// What is played and recorded, sample for sample.
#include "tools/commands/stream_command.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "tests/support/wave_sound.h"
#include "tests/tools/command_runner.h"
#include "tests/tools/scratch_folder.h"
#include "tests/tools/wav_bytes.h"

namespace {

using simulator::Frame;
using Words = std::vector<std::string>;

constexpr WavFormat FullWidth{.Bits = 32, .BytesPerSample = 4};

CommandResult RunStepped(const Words& more) {
    Words words = more;
    words.insert(words.end(), {"--time", "stepped"});
    return RunCommand(words);
}

std::string BytesOf(const std::vector<Frame>& frames) {
    return {reinterpret_cast<const char*>(frames.data()), frames.size() * sizeof(Frame)};
}

// A file for each device, one format of each kind; what the driver makes of all the others is its own tests'
// business.
TEST(PlayCommand, IsHeardSampleForSample) {
    const struct {
        const char* Capture;
        WavFormat Format;
    } cases[] = {
        {"out-0.wav", {.Channels = 1, .Rate = 8000, .Bits = 8, .BytesPerSample = 1}},
        {"out-3.wav", {.Tag = WAVE_FORMAT_MULAW, .Rate = 11025, .Bits = 8, .BytesPerSample = 1}},
        {"out-4.wav", {.Rate = 96000, .Bits = 24, .BytesPerSample = 3}},
        {"out-7.wav", {.Tag = WAVE_FORMAT_EXTENSIBLE, .Bits = 32, .BytesPerSample = 4, .ValidBits = 24}},
    };
    const ScratchFolder folder;
    Words words = {"play",     "--cards",   "4",
                   "--device", "0,3,4,7",   "--buffer-ms",
                   "13",       "--capture", folder.Path("out.wav")};
    for (const auto& c : cases) {
        words.push_back(folder.Path(std::to_string(c.Format.Rate) + ".wav"));
        WriteFile(words.back(), WavFile(c.Format, NoiseBytes(5003, c.Format)));
    }
    const CommandResult result = RunStepped(words);
    ASSERT_EQ(result.Status, 0) << result.Errors;
    for (const auto& [capture, format] : cases) {
        const std::string samples = NoiseBytes(5003, format);
        const std::vector<Frame> heard = Sound(ProgramsFormat(format), {samples.begin(), samples.end()});
        WavFormat captured = FullWidth;
        captured.Rate = format.Rate;
        EXPECT_TRUE(ReadFile(folder.Path(capture)) == WavFile(captured, BytesOf(heard))) << capture;
    }
    EXPECT_EQ(result.Values("frames-played"), Words(4, "5003"));
    EXPECT_EQ(result.Values("silent-frames"), Words(4, "0"));
}

// As when a register has another width than the samples.
TEST(PlayCommand, TellsOfMoreFramesThanItGave) {
    const auto losses = [](kestvox::StreamKind kind, uint64_t frames) {
        kestvox::StreamRunner::Report report{};
        report.FrameCount = 100;
        report.Status.Frames = frames;
        kestvox::Outcome outcome;
        kestvox::AddStream(outcome, 3, kind, report, true);
        return outcome.Run.Losses;
    };
    EXPECT_EQ(losses(kestvox::StreamKind::Playing, 100), Words{});
    EXPECT_EQ(losses(kestvox::StreamKind::Playing, 101), Words{"device 3: 1 frame more than asked for"});
    EXPECT_EQ(losses(kestvox::StreamKind::Recording, 101), Words{});
}

// The signal, then silence up to a length that a stop can keep.
TEST(RecordCommand, WritesWhatIsPluggedInInEveryFormat) {
    const struct {
        const char* Name;
        const char* Device;
        WavFormat Format;
    } cases[] = {
        {"u8", "0", {.Channels = 1, .Rate = 8000, .Bits = 8, .BytesPerSample = 1}},
        {"s16", "0", {.Rate = 96000}},
        {"s20", "0", {.Bits = 20, .BytesPerSample = 3}},
        {"s24", "1", {.Channels = 1, .Rate = 88200, .Bits = 24, .BytesPerSample = 3}},
        {"s24in32", "0", {.Tag = 0xFFFE, .Rate = 32000, .Bits = 32, .BytesPerSample = 4, .ValidBits = 24}},
        {"s32", "1", {.Bits = 32, .BytesPerSample = 4}},
    };
    constexpr size_t Frames = 5003;
    constexpr size_t Recorded = 5024;
    const ScratchFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.Name) + " on device " + c.Device);
        WavFormat plugged = FullWidth;
        plugged.Rate = c.Format.Rate;
        const std::string signal = NoiseBytes(Frames, plugged);
        WriteFile(folder.Path("in.wav"), WavFile(plugged, signal));
        const CommandResult result =
            RunStepped({"record", folder.Path("out.wav"), "--device", c.Device, "--format", c.Name, "--rate",
                        std::to_string(c.Format.Rate), "--channels", std::to_string(c.Format.Channels),
                        "--input", folder.Path("in.wav"), "--buffer-ms", "13"});
        ASSERT_EQ(result.Status, 0) << result.Errors;
        std::vector<Frame> heard = Sound(ProgramsFormat(plugged), {signal.begin(), signal.end()});
        heard.resize(Recorded);
        const std::vector<BYTE> client = ClientBytes(ProgramsFormat(c.Format), heard);
        EXPECT_TRUE(ReadFile(folder.Path("out.wav")) == WavFile(c.Format, {client.begin(), client.end()}));
        EXPECT_EQ(result.Values("frames-recorded"), Words{std::to_string(Recorded)});
        EXPECT_EQ(result.Values("dropped-frames"), Words{"0"});
    }
}

// The length is asked for, or that of the signal, or five seconds.
TEST(RecordCommand, RecordsATone) {
    const ScratchFolder folder;
    const CommandResult result =
        RunStepped({"record", folder.Path("out.wav"), "--rate", "48000", "--channels", "1", "--format", "s32",
                    "--seconds", "0.1", "--input", "tone:1000"});
    ASSERT_EQ(result.Status, 0) << result.Errors;
    constexpr size_t HeaderSize = 44;
    const std::string file = ReadFile(folder.Path("out.wav"));
    std::vector<int32_t> samples(4800);
    ASSERT_EQ(file.size(), HeaderSize + samples.size() * 4);
    std::memcpy(samples.data(), &file[HeaderSize], samples.size() * 4);
    // Sine and cosine at each place, wherever the tone begins.
    const double slope = 2 * std::sin(2 * std::numbers::pi / 48);
    for (size_t i = 1; i + 1 < samples.size(); ++i) {
        const double cosine = (static_cast<double>(samples[i + 1]) - samples[i - 1]) / slope;
        ASSERT_NEAR(std::hypot(samples[i], cosine), 0x40000000, 20) << i;
    }
}

}  // namespace
