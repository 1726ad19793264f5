// Recording, and playing into one's own input, as a user would do it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "tests/support/wave_sound.h"
#include "tests/tools/command_runner.h"
#include "tests/tools/scratch_folder.h"
#include "tests/tools/wav_bytes.h"
#include "tools/files/wav_reader.h"

namespace {

using simulator::Frame;
using Words = std::vector<std::string>;

constexpr WavFormat FullWidth{.Bits = 32, .BytesPerSample = 4};

CommandResult RunStepped(const Words& more) {
    Words words = more;
    words.insert(words.end(), {"--time", "stepped"});
    return RunCommand(words);
}

std::string ReadSamples(const std::string& path) {
    kestvox::WavReader reader(path);
    std::string bytes(reader.ByteCount().value(), '\0');
    reader.Read(bytes);
    return bytes;
}

std::vector<Frame> FullWidthFrames(const std::string& bytes) {
    std::vector<Frame> frames(bytes.size() / sizeof(Frame));
    std::memcpy(frames.data(), bytes.data(), bytes.size());
    return frames;
}

// The whole file, header and all: the signal, then silence up to a length that a stop can keep.
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
        std::vector<Frame> heard = FullWidthFrames(signal);
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
    const std::string bytes = ReadSamples(folder.Path("out.wav"));
    std::vector<int32_t> samples(4800);
    ASSERT_EQ(bytes.size(), samples.size() * 4);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    // Sine and cosine at each place, wherever the tone begins.
    const double slope = 2 * std::sin(2 * std::numbers::pi / 48);
    for (size_t i = 1; i + 1 < samples.size(); ++i) {
        const double cosine = (static_cast<double>(samples[i + 1]) - samples[i - 1]) / slope;
        ASSERT_NEAR(std::hypot(samples[i], cosine), 0x40000000, 20) << i;
    }
}

TEST(RecordCommand, DithersTheAnalogInputWhenTold) {
    const ScratchFolder folder;
    const auto record = [&](const Words& more) {
        Words words = {"record", folder.Path("out.wav"), "--format", "u8", "--rate", "8000"};
        words.insert(words.end(), more.begin(), more.end());
        const CommandResult result = RunStepped(words);
        EXPECT_EQ(result.Status, 0) << result.Errors;
        return ReadSamples(folder.Path("out.wav"));
    };
    const std::string silence(80000, '\x80');  // five seconds, which end on a whole unit
    EXPECT_TRUE(record({"--set", "DitherADC=1", "--dither", "0"}) == silence);
    EXPECT_TRUE(record({"--dither", "1", "--device", "1"}) == silence);
    for (const char* dither : {"1", "2", "3", "4"}) {
        const std::string dithered = record({"--dither", dither});
        EXPECT_EQ(dithered.size(), silence.size());
        EXPECT_FALSE(dithered == silence) << dither;
    }
}

TEST(RecordCommand, ReportsHeadersThatAreLost) {
    const ScratchFolder folder;
    const CommandResult lost = RunStepped({"record", folder.Path("out.wav"), "--fault", "completion:3:lost"});
    EXPECT_EQ(lost.Status, 1);
    EXPECT_EQ(lost.Errors,
              "kestvox: device 0: nothing moved for 9.0 s, at frame 22080 of 220512, while it waited for a "
              "header to come back\n");
}

// A locked recording begins with the playback; another one begins when it is started, a hundredth of a
// second before.
TEST(LoopbackCommand, FindsEverySampleAtTheSamePlaceOnEveryRun) {
    const struct {
        const char* Device;
        WavFormat Format;
    } cases[] = {
        {"0", {}},
        {"1", {.Channels = 1, .Rate = 8000, .Bits = 8, .BytesPerSample = 1}},
        {"3", {.Rate = 48000, .Bits = 32, .BytesPerSample = 4}},
    };
    const ScratchFolder folder;
    for (const auto& c : cases) {
        const std::string samples = NoiseBytes(7001, c.Format);
        WriteFile(folder.Path("in.wav"), WavFile(c.Format, samples));
        for (const bool lock : {false, true}) {
            SCOPED_TRACE(std::string("device ") + c.Device + (lock ? ", locked" : ""));
            Words words = {
                "loopback", folder.Path("in.wav"), "--device", c.Device, "--cards", "2", "--follow", "1=0",
                "--out",    folder.Path("out.wav")};
            if (lock) {
                words.emplace_back("--lock");
            }
            const size_t offset = lock ? 0 : c.Format.Rate / 100;
            for (int run = 0; run < 2; ++run) {
                const CommandResult result = RunStepped(words);
                EXPECT_EQ(result.Status, 0) << result.Errors;
                EXPECT_EQ(result.Values("offset-frames"), Words{std::to_string(offset)});
                EXPECT_EQ(result.Values("samples-lost"), Words{"0"});
                const std::string back = ReadSamples(folder.Path("out.wav"));
                const size_t frameSize = size_t{c.Format.BytesPerSample} * c.Format.Channels;
                EXPECT_TRUE(back.compare(offset * frameSize, samples.size(), samples) == 0);
            }
        }
    }
}

// With the mixer closed, only what was silence already comes back as it was.
TEST(LoopbackCommand, SaysHowMuchDidNotComeBack) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(3000);
    WriteFile(folder.Path("in.wav"), WavFile({}, samples));
    size_t sounding = 0;
    for (size_t i = 0; i < samples.size(); i += 2) {
        sounding += samples[i] != 0 || samples[i + 1] != 0 ? 1 : 0;
    }
    const CommandResult result =
        RunStepped({"loopback", folder.Path("in.wav"), "--set", "Monitor=0,0,0,0,0,0,0,0"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(result.Values("samples-lost"), Words{std::to_string(sounding)});
    EXPECT_EQ(result.Errors,
              "kestvox: " + std::to_string(sounding) + " samples did not come back as they were played\n");
}

// --- suspended in mid-stream --------------------------------------------------------------------

TEST(SuspendAt, LosesNothingThatIsPlayedAndOnlyWhatPassedOfARecording) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(30011);
    WriteFile(folder.Path("in.wav"), WavFile({}, samples));
    const CommandResult played = RunStepped(
        {"play", folder.Path("in.wav"), "--suspend-at", "0.2", "--capture", folder.Path("out.wav")});
    ASSERT_EQ(played.Status, 0) << played.Errors;
    EXPECT_EQ(played.Values("headers-returned"), Words{"14"});
    const size_t silent = std::stoul(played.Values("silent-frames").at(0));
    EXPECT_GE(silent, 4410u) << "a tenth of a second of sleep";
    const std::vector<BYTE> heard =
        ClientBytes(PcmFormat(44100, 2, 16), FullWidthFrames(ReadSamples(folder.Path("out.wav"))));
    EXPECT_TRUE(std::string(heard.begin(), heard.end()) ==
                samples.substr(0, 8820 * 4) + std::string(silent * 4, '\0') + samples.substr(8820 * 4));

    const CommandResult recorded = RunStepped(
        {"record", folder.Path("out.wav"), "--input", "tone:100", "--seconds", "0.5", "--suspend-at", "0.2"});
    ASSERT_EQ(recorded.Status, 0) << recorded.Errors;
    EXPECT_GE(ReadSamples(folder.Path("out.wav")).size(), (22050 - 32) * 4u);
    EXPECT_GE(std::stoul(recorded.Values("dropped-frames").at(0)), 4410u);
}

}  // namespace
