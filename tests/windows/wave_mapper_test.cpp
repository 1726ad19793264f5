// The wave mapper of the multimedia front: what no device takes goes through the system's compression
// manager.
#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include <msacm.h>

#include "tests/support/input_test.h"
#include "tests/support/output_test.h"

namespace {

using Bytes = std::vector<BYTE>;

struct Adpcm {
    IMAADPCMWAVEFORMAT Format;

    Adpcm(DWORD rate, WORD block) : Format{} {
        const auto samples = static_cast<WORD>((block - 4) * 2 + 1);
        Format.wfx = {WAVE_FORMAT_IMA_ADPCM, 1, rate, rate * block / samples, block, 4, sizeof(WORD)};
        Format.wSamplesPerBlock = samples;
    }
    operator WaveFormat() const {
        WaveFormat format{};
        memcpy(&format, &Format, sizeof Format);
        return format;
    }
};

// What the system itself makes of it.
Bytes Converted(const WAVEFORMATEX& from, const WAVEFORMATEX& to, Bytes data) {
    HACMSTREAM stream = nullptr;
    DWORD room = 0;
    EXPECT_EQ(acmStreamOpen(&stream, nullptr, const_cast<WAVEFORMATEX*>(&from),
                            const_cast<WAVEFORMATEX*>(&to), nullptr, 0, 0, ACM_STREAMOPENF_NONREALTIME),
              MMRESULT{MMSYSERR_NOERROR});
    const auto size = static_cast<DWORD>(data.size());
    acmStreamSize(stream, size, &room, ACM_STREAMSIZEF_SOURCE);
    Bytes result(room);
    ACMSTREAMHEADER header = {};
    header.cbStruct = sizeof header;
    header.pbSrc = data.data();
    header.cbSrcLength = size;
    header.pbDst = result.data();
    header.cbDstLength = room;
    acmStreamPrepareHeader(stream, &header, 0);
    EXPECT_EQ(acmStreamConvert(stream, &header, ACM_STREAMCONVERTF_BLOCKALIGN | ACM_STREAMCONVERTF_START),
              MMRESULT{MMSYSERR_NOERROR});
    EXPECT_EQ(header.cbSrcLengthUsed, size);
    result.resize(header.cbDstLengthUsed);
    acmStreamUnprepareHeader(stream, &header, 0);
    acmStreamClose(stream, 0);
    return result;
}

const WaveFormat Speech = PcmFormat(16000, 1, 16);

class PlayingMapper : public OutputTest {
protected:
    // Plays `data` in two buffers, the first of which ends within a block, and expects what the `steps` make
    // of it.
    void ExpectPlayed(const WaveFormat& format, const Bytes& data, std::initializer_list<WaveFormat> steps) {
        ASSERT_EQ(player_.Open(WAVE_MAPPER, format), MMRESULT{MMSYSERR_NOERROR});
        Cards().ForgetAudio();
        const auto half = data.begin() + static_cast<std::ptrdiff_t>(data.size() / 2 + 1);
        EXPECT_EQ(player_.Write(Bytes(data.begin(), half)), MMRESULT{MMSYSERR_NOERROR});
        EXPECT_EQ(player_.Write(Bytes(half, data.end())), MMRESULT{MMSYSERR_NOERROR});
        Cards().Advance(2 * Second);
        ExpectEachReturnedOnce();

        const WaveFormat* last = &format;
        Bytes expected = data;
        for (const WaveFormat& step : steps) {
            expected = Converted(*last, step, expected);
            last = &step;
        }
        EXPECT_EQ(Played(), Sound(*last, expected));
        EXPECT_EQ(player_.Position(TIME_MS), 1000u);
        EXPECT_EQ(player_.Position(TIME_SAMPLES), format.Get()->nSamplesPerSec);
        EXPECT_EQ(player_.Position(TIME_BYTES), data.size());
    }
};

TEST_F(PlayingMapper, SpeechPlaysAtTwiceItsRate) {
    ExpectPlayed(Speech, Pattern(32000), {PcmFormat(32000, 1, 16)});
}

TEST_F(PlayingMapper, AdpcmPlaysAsTheSystemReadsIt) {
    // A second is a whole number of blocks, of 245 and of 125 samples.
    const struct {
        Adpcm Format;
        DWORD Rate;
        std::initializer_list<WaveFormat> Steps;
    } cases[] = {
        {Adpcm(22050, 126), 22050, {PcmFormat(22050, 1, 16)}},
        {Adpcm(16000, 66), 16000, {PcmFormat(16000, 1, 16), PcmFormat(32000, 1, 16)}},
    };
    for (const auto& entry : cases) {
        const Bytes data =
            Converted(PcmFormat(entry.Rate, 1, 16), entry.Format.Format.wfx, Pattern(2 * entry.Rate));
        ExpectPlayed(entry.Format, data, entry.Steps);
        player_.Shut();
        player_.Forget();
    }
}

TEST_F(PlayingMapper, ConvertsOnlyWhereItMay) {
    EXPECT_EQ(player_.Open(AnalogOut, Speech), MMRESULT{WAVERR_BADFORMAT});
    const struct {
        UINT Device;
        DWORD Flags;
        MMRESULT Result;
    } cases[] = {
        {WAVE_MAPPER, 0, MMSYSERR_NOERROR},
        {0xFFFF, 0, MMSYSERR_NOERROR},
        {WAVE_MAPPER, WAVE_ALLOWSYNC, MMSYSERR_NOERROR},
        {WAVE_MAPPER, WAVE_FORMAT_DIRECT, WAVERR_BADFORMAT},
        {DigitalOut, WAVE_MAPPED, MMSYSERR_NOERROR},
    };
    for (const auto& entry : cases) {
        EXPECT_EQ(waveOutOpen(nullptr, entry.Device, Speech.Get(), 0, 0, entry.Flags | WAVE_FORMAT_QUERY),
                  entry.Result)
            << entry.Device << " " << entry.Flags;
    }
}

// A reset gives every header back once; what comes after it begins afresh.
TEST_F(PlayingMapper, AResetLeavesNothingBehind) {
    ASSERT_EQ(player_.Open(WAVE_MAPPER, Speech), MMRESULT{MMSYSERR_NOERROR});
    player_.Write(Pattern(3201), WHDR_BEGINLOOP | WHDR_ENDLOOP, 1000);
    player_.Write(Pattern(3200));
    Cards().Advance(Second);
    EXPECT_EQ(player_.DoneCount(), 0u);
    player_.Reset();
    Cards().Advance(1);
    ExpectEachReturnedOnce();
    EXPECT_EQ(player_.Position(TIME_BYTES), 0u);
    Cards().ForgetAudio();
    const Bytes data = Pattern(3200, 2);
    player_.Write(data);
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(PcmFormat(32000, 1, 16), Converted(Speech, PcmFormat(32000, 1, 16), data)));
}

using RecordingMapper = InputTest;

TEST_F(RecordingMapper, SpeechIsRecordedAtTwiceItsRate) {
    const WaveFormat device = PcmFormat(32000, 1, 16);
    const Bytes arriving = ClientBytes(device, PlugIn(32000));
    Open(Speech, WAVE_MAPPER);
    Add(3200, 3);
    recorder_.Start();
    AdvanceFrames(6402, 32000);
    EXPECT_EQ(recorder_.Counts(), (std::vector<DWORD>{3200, 3200}));
    EXPECT_NEAR(recorder_.Position(TIME_SAMPLES), 3200, 1);
    recorder_.Reset();
    Cards().Advance(1);
    ExpectEachReturnedOnce();
    Bytes recorded = recorder_.Recorded();
    recorded.resize(6400);
    Bytes expected;
    for (int part = 0; part < 2; ++part) {
        const Bytes converted = Converted(
            device, Speech, Bytes(arriving.begin() + part * 6400, arriving.begin() + (part + 1) * 6400));
        expected.insert(expected.end(), converted.begin(), converted.end());
    }
    EXPECT_EQ(recorded, expected);
}

}  // namespace
