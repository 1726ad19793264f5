#include "tools/files/wav_reader.h"

#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"
#include "tools/command_error.h"

namespace {

using kestvox::CommandError;
using kestvox::WavReader;

using WavReaderTest = CommandTest;

std::string ReadAll(WavReader& reader, size_t atOnce) {
    std::string all;
    std::string part(atOnce, '\0');
    while (const size_t count = reader.Read(part)) {
        all.append(part, 0, count);
    }
    return all;
}

TEST_F(WavReaderTest, ReadsSamplesAmongOtherChunksOfOddLength) {
    const std::string samples = Noise(400);
    Write("a.wav", Riff(Chunk("LIST", "odd") + Chunk("fmt ", FormatBody()) + Chunk("fact", "12345") +
                        Chunk("data", samples) + Chunk("LIST", "end")));
    WavReader reader(Path("a.wav"));
    EXPECT_EQ(reader.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(reader.Format().cbSize, 0);
    EXPECT_EQ(reader.FrameCount(), 100u);
    EXPECT_EQ(ReadAll(reader, 28), samples);
    EXPECT_TRUE(reader.AtEnd());
}

// How much data there is when the header's sizes were never filled in, and when they were.
TEST_F(WavReaderTest, TakesTheLengthFromTheFileOnlyWhenTheWriterLeftItOpen) {
    constexpr uint32_t HeaderOnly = 36;
    const struct {
        const char* What;
        uint32_t RiffSize;
        uint32_t DataSize;
    } cases[] = {
        {"both all ones", 0xFFFFFFFF, 0xFFFFFFFF},
        {"data all ones", HeaderOnly + 43, 0xFFFFFFFF},
        {"both zero", 0, 0},
        {"header written first, never again", HeaderOnly, 0},
        {"RIFF all ones", 0xFFFFFFFF, 0},
        {"both right", HeaderOnly + 40, 40},
        {"last frame incomplete", HeaderOnly + 43, 43},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.What);
        Write("a.wav", "RIFF" + Little(c.RiffSize, 4) + "WAVE" + Chunk("fmt ", FormatBody()) + "data" +
                           Little(c.DataSize, 4) + Noise(43));
        WavReader reader(Path("a.wav"));
        EXPECT_EQ(reader.FrameCount(), 10u);
        EXPECT_EQ(ReadAll(reader, 1000), Noise(43).substr(0, 40));
    }
}

TEST_F(WavReaderTest, SaysWhatIsWrongWithABadFile) {
    const std::string good = NoiseFile(10);
    const std::string fmt = Chunk("fmt ", FormatBody());
    std::string noAlign = FormatBody();
    noAlign.replace(12, 2, Little(0, 2));
    std::string shortExtension = FormatBody(ExtensibleFormat(44100, 2, 16, 16)).substr(0, 30);
    const std::pair<std::string, const char*> cases[] = {
        {"", "not a WAV file"},
        {"RIFF", "not a WAV file"},
        {"RIFX" + good.substr(4), "not a WAV file"},
        {"RIFF" + Little(4, 4) + "AVI ", "not a WAV file"},
        {Riff(""), "no format chunk"},
        {Riff(fmt), "no data chunk"},
        {Riff(Chunk("data", Noise(40)) + fmt), "before its format"},
        {Riff(Chunk("fmt ", FormatBody().substr(0, 14)) + Chunk("data", Noise(40))), "length of 14"},
        {Riff(Chunk("fmt ", noAlign) + Chunk("data", Noise(40))), "no block alignment"},
        {Riff(Chunk("fmt ", shortExtension) + Chunk("data", Noise(40))), "shorter than it says"},
        {good.substr(0, good.size() - 1), "truncated: 39 of 40 bytes"},
        {good.substr(0, 30), "truncated inside its chunk 'fmt '"},
        {Riff(fmt + "\n\rx\x80" + Little(99, 4)), "truncated inside its chunk '??x?'"},
        {Riff(fmt + Chunk("data", "") + Chunk("LIST", Noise(8))), "no samples"},
        {Riff(fmt + Chunk("data", "abc")), "no samples"},
    };
    for (const auto& [bytes, why] : cases) {
        SCOPED_TRACE(why);
        Write("bad.wav", bytes);
        try {
            const WavReader reader(Path("bad.wav"));
            ADD_FAILURE() << "was read";
        } catch (const CommandError& error) {
            const std::string text = error.what();
            EXPECT_NE(text.find(why), std::string::npos) << text;
            EXPECT_TRUE(text.starts_with(Path("bad.wav") + ": ")) << text;
            EXPECT_EQ(text.find('\n'), std::string::npos);
        }
    }
}

}  // namespace
