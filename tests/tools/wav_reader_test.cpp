#include "tools/files/wav_reader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/scratch_folder.h"
#include "tests/tools/wav_bytes.h"
#include "tools/command_error.h"

namespace {

using kestvox::CommandError;
using kestvox::WavReader;

std::string ReadAll(WavReader& reader, size_t atOnce) {
    std::string all;
    std::string part(atOnce, '\0');
    while (const size_t count = reader.Read(part)) {
        all.append(part, 0, count);
    }
    return all;
}

TEST(WavReader, ReadsSamplesAmongOtherChunksOfOddLength) {
    const ScratchFolder folder;
    const std::string samples = NoiseBytes(100);
    WriteFile(folder.Path("a.wav"),
              Riff(Chunk("LIST", "odd") + Chunk("fmt ", FormatBody({})) + Chunk("fact", "12345") +
                   Chunk("data", samples) + Chunk("LIST", "end")));
    WavReader reader(folder.Path("a.wav"));
    EXPECT_EQ(reader.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(reader.Format().cbSize, 0);
    EXPECT_EQ(reader.FrameCount(), 100u);
    EXPECT_EQ(ReadAll(reader, 28), samples);
    EXPECT_TRUE(reader.AtEnd());
}

// How much data there is when the header's sizes were never filled in, and when they were.
TEST(WavReader, TakesTheLengthFromTheFileOnlyWhenTheWriterLeftItOpen) {
    struct Case {
        const char* What;
        uint32_t RiffSize;
        uint32_t DataSize;
        uint64_t Frames;
    };
    constexpr uint32_t HeaderOnly = 36;
    constexpr Case Cases[] = {
        {"both all ones", 0xFFFFFFFF, 0xFFFFFFFF, 10},
        {"data all ones", HeaderOnly + 43, 0xFFFFFFFF, 10},
        {"both zero", 0, 0, 10},
        {"header written first, never again", HeaderOnly, 0, 10},
        {"RIFF all ones", 0xFFFFFFFF, 0, 10},
        {"both right", HeaderOnly + 40, 40, 10},
        {"last frame incomplete", HeaderOnly + 43, 43, 10},
    };
    const ScratchFolder folder;
    for (const Case& c : Cases) {
        SCOPED_TRACE(c.What);
        WriteFile(folder.Path("a.wav"), "RIFF" + Little(c.RiffSize, 4) + "WAVE" +
                                            Chunk("fmt ", FormatBody({})) + "data" + Little(c.DataSize, 4) +
                                            Noise(43));
        WavReader reader(folder.Path("a.wav"));
        EXPECT_EQ(reader.FrameCount(), c.Frames);
        EXPECT_EQ(ReadAll(reader, 1000), Noise(43).substr(0, 40));
    }
}

TEST(WavReader, SaysWhatIsWrongWithABadFile) {
    const std::string good = WavFile({}, Noise(40));
    const std::string fmt = Chunk("fmt ", FormatBody({}));
    std::string noAlign = FormatBody({});
    noAlign.replace(12, 2, Little(0, 2));
    std::string shortExtension = FormatBody({.Tag = 0xFFFE, .ValidBits = 16}).substr(0, 30);
    const struct {
        std::string Bytes;
        const char* Why;
    } cases[] = {
        {"", "not a WAV file"},
        {"RIFF", "not a WAV file"},
        {"RIFX" + good.substr(4), "not a WAV file"},
        {"RIFF" + Little(4, 4) + "AVI ", "not a WAV file"},
        {Riff(""), "no format chunk"},
        {Riff(fmt), "no data chunk"},
        {Riff(Chunk("data", Noise(40)) + fmt), "before its format"},
        {Riff(Chunk("fmt ", FormatBody({}).substr(0, 14)) + Chunk("data", Noise(40))), "length of 14"},
        {Riff(Chunk("fmt ", noAlign) + Chunk("data", Noise(40))), "no block alignment"},
        {Riff(Chunk("fmt ", shortExtension) + Chunk("data", Noise(40))), "shorter than it says"},
        {good.substr(0, good.size() - 1), "truncated: 39 of 40 bytes"},
        {good.substr(0, 30), "truncated inside its chunk 'fmt '"},
        {Riff(fmt + "\n\rx\x80" + Little(99, 4)), "truncated inside its chunk '??x?'"},
        {Riff(fmt + Chunk("data", "") + Chunk("LIST", Noise(8))), "no samples"},
        {Riff(fmt + Chunk("data", "abc")), "no samples"},
    };
    const ScratchFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Why);
        const std::string path = folder.Path("bad.wav");
        WriteFile(path, c.Bytes);
        try {
            const WavReader reader(path);
            ADD_FAILURE() << "was read";
        } catch (const CommandError& error) {
            const std::string text = error.what();
            EXPECT_NE(text.find(c.Why), std::string::npos) << text;
            EXPECT_EQ(text.find(path + ": "), 0u) << text;
            EXPECT_EQ(text.find('\n'), std::string::npos);
        }
    }
    EXPECT_THROW(WavReader(folder.Path("absent.wav")), CommandError);
    EXPECT_THROW(WavReader(folder.Path("")), CommandError);
}

}  // namespace
