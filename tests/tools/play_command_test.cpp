#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/wave_sound.h"
#include "tests/tools/command_runner.h"
#include "tests/tools/scratch_folder.h"
#include "tests/tools/wav_bytes.h"
#include "tools/files/wav_reader.h"

namespace {

using simulator::Frame;
using Words = std::vector<std::string>;

// The captured frames; the file must be 32-bit stereo PCM at that rate.
std::vector<Frame> ReadCapture(const std::string& path, uint32_t rate) {
    kestvox::WavReader reader(path);
    EXPECT_EQ(reader.Format().wFormatTag, WAVE_FORMAT_PCM);
    EXPECT_EQ(reader.Format().nChannels, 2);
    EXPECT_EQ(reader.Format().wBitsPerSample, 32);
    EXPECT_EQ(reader.Format().nSamplesPerSec, rate);
    std::vector<Frame> frames(reader.FrameCount().value());
    reader.Read({reinterpret_cast<char*>(frames.data()), frames.size() * sizeof(Frame)});
    return frames;
}

// Comparing whole vectors would print them.
void ExpectSameFrames(const std::vector<Frame>& heard, const std::vector<Frame>& expected) {
    ASSERT_EQ(heard.size(), expected.size());
    for (size_t i = 0; i < heard.size(); ++i) {
        ASSERT_TRUE(heard[i] == expected[i])
            << "frame " << i << ": " << std::hex << heard[i].Left << " " << heard[i].Right << " instead of "
            << expected[i].Left << " " << expected[i].Right;
    }
}

CommandResult PlayStepped(const Words& more) {
    Words words = {"play", "--time", "stepped"};
    words.insert(words.end(), more.begin(), more.end());
    return RunCommand(words);
}

std::vector<Frame> Sounds(const WavFormat& format, const std::string& samples) {
    return Sound(ProgramsFormat(format), {samples.begin(), samples.end()});
}

// A file for each device, one format of each kind; what the driver makes of all the others is its own tests'
// business.
TEST(PlayCommand, IsHeardSampleForSample) {
    const WavFormat formats[] = {
        {.Channels = 1, .Rate = 8000, .Bits = 8, .BytesPerSample = 1},
        {.Tag = WAVE_FORMAT_MULAW, .Rate = 11025, .Bits = 8, .BytesPerSample = 1},
        {.Rate = 96000, .Bits = 24, .BytesPerSample = 3},
        {.Tag = WAVE_FORMAT_EXTENSIBLE, .Bits = 32, .BytesPerSample = 4, .ValidBits = 24},
    };
    const ScratchFolder folder;
    Words words = {"--cards",     "4",  "--device",  "0,3,4,7",
                   "--buffer-ms", "13", "--capture", folder.Path("out.wav")};
    for (const WavFormat& format : formats) {
        words.push_back(folder.Path(std::to_string(format.Rate) + ".wav"));
        WriteFile(words.back(), WavFile(format, NoiseBytes(5003, format)));
    }
    const CommandResult result = PlayStepped(words);
    ASSERT_EQ(result.Status, 0) << result.Errors;
    const char* const captures[] = {"out-0.wav", "out-3.wav", "out-4.wav", "out-7.wav"};
    for (size_t i = 0; i < std::size(formats); ++i) {
        SCOPED_TRACE(captures[i]);
        ExpectSameFrames(ReadCapture(folder.Path(captures[i]), formats[i].Rate),
                         Sounds(formats[i], NoiseBytes(5003, formats[i])));
    }
    EXPECT_EQ(result.Values("frames-played"), Words(4, "5003"));
    EXPECT_EQ(result.Values("silent-frames"), Words(4, "0"));
}

// Two cards of one clock group, both files through two devices each: all four start on one frame.
TEST(PlayCommand, StartsTheDevicesOfAClockGroupTogether) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(3001);
    WriteFile(folder.Path("in.wav"), WavFile({}, samples));
    const CommandResult result =
        PlayStepped({folder.Path("in.wav"), "--cards", "2", "--follow", "1=0", "--device", "0,1", "--device",
                     "2,3", "--capture", folder.Path("out.wav")});
    ASSERT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(result.Values("device"), (Words{"0", "1", "2", "3"}));
    const Words starts = result.Values("start-frame");
    ASSERT_EQ(starts.size(), 4u);
    EXPECT_NE(starts[0], "none");
    EXPECT_EQ(starts, Words(4, starts[0]));
    for (const char* device : {"0", "1", "2", "3"}) {
        ExpectSameFrames(ReadCapture(folder.Path(std::string("out-") + device + ".wav"), 44100),
                         Sounds({}, samples));
    }
}

// In one header, and in several of which the last is shorter.
TEST(PlayCommand, PlaysTheWholeFileInALoop) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(5003);
    WriteFile(folder.Path("in.wav"), WavFile({}, samples));
    const struct {
        const char* Milliseconds;
        const char* Headers;
    } cases[] = {{"1000", "1"}, {"20", "6"}};
    for (const auto& c : cases) {
        const CommandResult result = PlayStepped({folder.Path("in.wav"), "--loops", "3", "--buffer-ms",
                                                  c.Milliseconds, "--capture", folder.Path("out.wav")});
        ASSERT_EQ(result.Status, 0) << result.Errors;
        EXPECT_EQ(result.Values("headers-returned"), Words{c.Headers});
        ExpectSameFrames(ReadCapture(folder.Path("out.wav"), 44100), Sounds({}, samples + samples + samples));
    }
}

TEST(PlayCommand, SetsTheVolumeBeforeItPlays) {
    const ScratchFolder folder;
    const WavFormat format{.Channels = 1};
    WriteFile(folder.Path("in.wav"), WavFile(format, Little(0x4000, 2) + Little(0xC000, 2)));
    for (const char* volume : {"32768", "50%"}) {
        const CommandResult result =
            PlayStepped({folder.Path("in.wav"), "--volume", volume, "--capture", folder.Path("out.wav")});
        ASSERT_EQ(result.Status, 0) << result.Errors;
        ExpectSameFrames(ReadCapture(folder.Path("out.wav"), 44100),
                         {{0x20000000, 0x20000000}, {-0x20000000, -0x20000000}});
    }
}

// The same run twice is the same to the last request, and the trace is one JSON value.
TEST(PlayCommand, IsTheSameOnEveryRunInSteppedTime) {
    const ScratchFolder folder;
    WriteFile(folder.Path("in.wav"), WavFile({}, NoiseBytes(20000)));
    const Words words = {folder.Path("in.wav"), "--device", "0,1", "--trace", folder.Path("t.json")};
    const CommandResult first = PlayStepped(words);
    ASSERT_EQ(first.Status, 0) << first.Errors;
    const std::string trace = ReadFile(folder.Path("t.json"));
    EXPECT_EQ(PlayStepped(words).Output, first.Output);
    for (const char* part : {"\"name\":\"card 0\"", "\"name\":\"digital out\"", "\"name\":\"QUEUE_BUFFER 0\"",
                             "\"ph\":\"X\"", "\"name\":\"stall 227\"", "\"dur\":227"}) {
        EXPECT_NE(trace.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(system(("python3 -m json.tool " + folder.Path("t.json") + " >/dev/null").c_str()), 0);
}

TEST(PlayCommand, PlaysInRealTime) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(4000);
    WriteFile(folder.Path("in.wav"), WavFile({}, samples));
    const CommandResult result =
        RunCommand({"play", folder.Path("in.wav"), "--capture", folder.Path("out.wav")});
    ASSERT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(result.Errors, "");
    EXPECT_EQ(result.Values("frames-played"), Words{"4000"});
    std::vector<Frame> heard = ReadCapture(folder.Path("out.wav"), 44100);
    EXPECT_EQ(heard.size(), 4000 + std::stoul(result.Values("silent-frames").at(0)));
}

// A header that is lost must not pass for success; late and doubled completions do no harm.
TEST(PlayCommand, ReportsHeadersThatAreLost) {
    const ScratchFolder folder;
    WriteFile(folder.Path("in.wav"), WavFile({}, NoiseBytes(20000)));
    const CommandResult lost = PlayStepped({folder.Path("in.wav"), "--fault", "completion:3:lost"});
    EXPECT_EQ(lost.Status, 1);
    EXPECT_EQ(
        lost.Errors,
        "kestvox: device 0: nothing moved for 5.1 s, at frame 20000 of 20000, while it waited for a header "
        "to come back\n");
    EXPECT_EQ(lost.Values("headers-returned"), Words{"9"});
    for (const char* fault : {"completion:3:late=2000000", "completion:10:late=2000000", "completion:3:twice",
                              "completion:10:twice"}) {
        const CommandResult result = PlayStepped({folder.Path("in.wav"), "--fault", fault});
        EXPECT_EQ(result.Status, 0) << fault << ": " << result.Errors;
        EXPECT_EQ(result.Values("headers-returned"), Words{"10"}) << fault;
    }
}

}  // namespace
