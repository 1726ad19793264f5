// What is played and recorded, sample for sample.
#include "tools/commands/stream_command.h"

#include <cmath>
#include <cstring>
#include <numbers>

#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"
#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

using simulator::Frame;
using Words = std::vector<std::string>;
using PlayCommand = CommandTest;
using RecordCommand = CommandTest;

std::string BytesOf(const std::vector<Frame>& frames) {
    return {reinterpret_cast<const char*>(frames.data()), frames.size() * sizeof(Frame)};
}

// A file for each device, one format of each kind; what the driver makes of all the others is its own tests'
// business.
TEST_F(PlayCommand, IsHeardSampleForSample) {
    const std::pair<const char*, WaveFormat> cases[] = {
        {"0.wav", PcmFormat(8000, 1, 8)},
        {"3.wav", TaggedFormat(WAVE_FORMAT_MULAW, 11025, 2, 8)},
        {"4.wav", PcmFormat(96000, 2, 24)},
        {"7.wav", ExtensibleFormat(44100, 2, 32, 24)},
    };
    for (const auto& [file, format] : cases) {
        Write(file, NoiseFile(5003, format));
    }
    const CommandResult result = Shell(
        "$K play [0347].wav --cards 4 --device 0,3,4,7 --buffer-ms 13 --capture out.wav --time stepped");
    ASSERT_EQ(result.Status, 0) << result.Errors;
    for (const auto& [file, format] : cases) {
        const std::vector<Frame> heard = Sound(format, Pattern(5003 * format.Get()->nBlockAlign));
        const WaveFormat captured = PcmFormat(format.Get()->nSamplesPerSec, 2, 32);
        EXPECT_TRUE(Read(std::string("out-") + file) == WavFile(captured, BytesOf(heard))) << file;
    }
    EXPECT_EQ(result.Values("frames-played"), Words(4, "5003"));
    EXPECT_EQ(result.Values("silent-frames"), Words(4, "0"));
}

// As when a register has another width than the samples.
TEST_F(PlayCommand, TellsOfMoreFramesThanItGave) {
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
TEST_F(RecordCommand, WritesWhatIsPluggedInInEveryFormat) {
    const struct {
        const char* Options;
        WaveFormat Format;
    } cases[] = {
        {"--format u8 --rate 8000 --channels 1", PcmFormat(8000, 1, 8)},
        {"--format s16 --rate 96000 --channels 2", PcmFormat(96000, 2, 16)},
        {"--format s20 --rate 44100 --channels 2", PcmFormat(44100, 2, 20)},
        {"--format s24 --rate 88200 --channels 1 --device 1", PcmFormat(88200, 1, 24)},
        {"--format s24in32 --rate 32000 --channels 2", ExtensibleFormat(32000, 2, 32, 24)},
        {"--format s32 --rate 44100 --channels 2 --device 1", PcmFormat(44100, 2, 32)},
    };
    constexpr size_t Frames = 5003;
    constexpr size_t Recorded = 5024;
    for (const auto& [options, format] : cases) {
        SCOPED_TRACE(options);
        std::vector<Frame> signal = NoiseFrames(Frames);
        Write("in.wav", WavFile(PcmFormat(format.Get()->nSamplesPerSec, 2, 32), BytesOf(signal)));
        const CommandResult result =
            Shell(std::string("$K record out.wav --input in.wav --buffer-ms 13 --time stepped ") + options);
        ASSERT_EQ(result.Status, 0) << result.Errors;
        signal.resize(Recorded);
        const std::vector<BYTE> client = ClientBytes(format, signal);
        EXPECT_TRUE(Read("out.wav") == WavFile(format, {client.begin(), client.end()}));
        EXPECT_EQ(result.Values("frames-recorded"), Words{std::to_string(Recorded)});
        EXPECT_EQ(result.Values("dropped-frames"), Words{"0"});
    }
}

// The length is asked for, or that of the signal, or five seconds.
TEST_F(RecordCommand, RecordsATone) {
    const CommandResult result = Shell(
        "$K record out.wav --rate 48000 --channels 1 --format s32 --seconds 0.1 --input tone:1000 "
        "--time stepped");
    ASSERT_EQ(result.Status, 0) << result.Errors;
    constexpr size_t HeaderSize = 44;
    const std::string file = Read("out.wav");
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
