// The multimedia front between programs and the driver: what it answers itself, and what becomes of handles.
#include "tests/support/output_test.h"

namespace {

#define EXPECT_MM(call, expected) EXPECT_EQ(call, MMRESULT{expected})

class WaveFrontTest : public OutputTest {
protected:
    void Open(UINT device = AnalogOut) { ASSERT_EQ(player_.Open(device, mono_), MMRESULT{MMSYSERR_NOERROR}); }
    MMRESULT Query(UINT device, DWORD_PTR callback, DWORD flags) {
        return waveOutOpen(nullptr, device, mono_.Get(), callback, 0, flags | WAVE_FORMAT_QUERY);
    }

    const WaveFormat mono_ = PcmFormat(44100, 1, 16);
    char data_[64] = {};
    WAVEHDR header_ = {data_, sizeof data_, 0, 0, 0, 0, nullptr, 0};
};

TEST_F(WaveFrontTest, HandlesGoBadWithTheCloseOnly) {
    Open(DigitalOut);
    const HWAVEOUT closed = player_.Handle();
    UINT device = 9;
    EXPECT_MM(waveOutGetID(closed, &device), MMSYSERR_NOERROR);
    EXPECT_EQ(device, DigitalOut);
    player_.Write(Pattern(400));
    EXPECT_MM(player_.Close(), WAVERR_STILLPLAYING);
    EXPECT_MM(waveInReset(reinterpret_cast<HWAVEIN>(closed)), MMSYSERR_INVALHANDLE);
    player_.Shut();
    Open();
    EXPECT_NE(player_.Handle(), closed);
    EXPECT_MM(waveOutClose(closed), MMSYSERR_INVALHANDLE);
    EXPECT_MM(waveOutWrite(closed, &header_, sizeof header_), MMSYSERR_INVALHANDLE);
    EXPECT_MM(waveOutGetID(closed, &device), MMSYSERR_INVALHANDLE);
    const auto nearlyANumber = reinterpret_cast<HWAVEOUT>(~UINT_PTR{0} << (4 * sizeof(UINT_PTR)));
    EXPECT_MM(waveOutMessage(nearlyANumber, DRV_QUERYMAPPABLE, 0, 0), MMSYSERR_INVALHANDLE);
}

TEST_F(WaveFrontTest, TheMapperTakesTheFirstDeviceThatIsFree) {
    constexpr UINT Mapper16 = 0xFFFF;
    EXPECT_MM(Query(WAVE_MAPPER, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    EXPECT_MM(Query(Mapper16, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    WavePlayer second;
    WavePlayer third;
    for (WavePlayer* player : {&player_, &second}) {
        ASSERT_EQ(player->Open(WAVE_MAPPER, mono_), MMRESULT{MMSYSERR_NOERROR});
        UINT device = 9;
        waveOutGetID(player->Handle(), &device);
        EXPECT_EQ(device, player == &player_ ? AnalogOut : DigitalOut);
    }
    EXPECT_MM(third.Open(WAVE_MAPPER, mono_), MMSYSERR_ALLOCATED);
}

TEST_F(WaveFrontTest, SomeQuestionsAreTheSystemsToAnswer) {
    const auto ask = [](UINT device, UINT message, void* first, DWORD_PTR second) {
        return waveOutMessage(reinterpret_cast<HWAVEOUT>(static_cast<UINT_PTR>(device)), message,
                              reinterpret_cast<DWORD_PTR>(first), second);
    };
    const std::basic_string<WCHAR> name = TEXT("\\\\.\\Kestrelvox0");
    DWORD size = 0;
    WCHAR text[40] = {};
    EXPECT_MM(ask(DigitalOut, DRV_QUERYMAPPABLE, nullptr, 0), MMSYSERR_NOERROR);
    EXPECT_MM(ask(DigitalOut, DRV_QUERYDEVICEINTERFACESIZE, &size, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(size, (name.size() + 1) * sizeof(WCHAR));
    EXPECT_MM(ask(DigitalOut, DRV_QUERYDEVICEINTERFACE, text, size - 1), MMSYSERR_INVALPARAM);
    EXPECT_MM(ask(DigitalOut, DRV_QUERYDEVICEINTERFACE, text, size), MMSYSERR_NOERROR);
    EXPECT_EQ(name, text);

    DWORD preferred = 9;
    DWORD flags = 9;
    WAVEOUTCAPSW caps = {};
    EXPECT_MM(ask(WAVE_MAPPER, DRVM_MAPPER_PREFERRED_GET, &preferred, reinterpret_cast<DWORD_PTR>(&flags)),
              MMSYSERR_NOERROR);
    EXPECT_EQ(preferred + flags, 0u);
    EXPECT_MM(waveOutGetDevCapsW(WAVE_MAPPER, &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_EQ(caps.wPid, MM_WAVE_MAPPER);
}

TEST_F(WaveFrontTest, OpenChecksItsArguments) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const struct {
        DWORD Flags;
        DWORD_PTR Callback;
        MMRESULT Result;
    } cases[] = {
        {CALLBACK_NULL, 0, MMSYSERR_NOERROR},
        {CALLBACK_THREAD, GetCurrentThreadId(), MMSYSERR_NOERROR},
        {CALLBACK_EVENT, reinterpret_cast<DWORD_PTR>(event), MMSYSERR_NOERROR},
        {CALLBACK_EVENT, 0x4242, MMSYSERR_INVALPARAM},
        {CALLBACK_FUNCTION, 0, MMSYSERR_INVALPARAM},
        {CALLBACK_WINDOW, 0x4242, MMSYSERR_INVALPARAM},
        {0x00000010, 0, MMSYSERR_INVALFLAG},
    };
    for (const auto& entry : cases) {
        EXPECT_EQ(Query(AnalogOut, entry.Callback, entry.Flags), entry.Result) << std::hex << entry.Flags;
    }
    HWAVEOUT out = nullptr;
    EXPECT_MM(waveOutOpen(nullptr, 0, mono_.Get(), 0, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutOpen(&out, 0, nullptr, 0, 0, 0), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutOpen(&out, 2, mono_.Get(), 0, 0, 0), MMSYSERR_BADDEVICEID);
    CloseHandle(event);
}

TEST_F(WaveFrontTest, HeadersArePreparedHere) {
    Open();
    const HWAVEOUT out = player_.Handle();
    EXPECT_MM(waveOutWrite(out, &header_, sizeof header_), WAVERR_UNPREPARED);
    EXPECT_MM(waveOutPrepareHeader(out, nullptr, sizeof header_), MMSYSERR_INVALPARAM);
    EXPECT_MM(waveOutPrepareHeader(out, &header_, sizeof header_ - 1), MMSYSERR_INVALPARAM);
    header_.dwFlags = WHDR_BEGINLOOP | WHDR_ENDLOOP | WHDR_DONE | WHDR_INQUEUE;
    for (int i = 0; i < 2; ++i) {
        EXPECT_MM(waveOutPrepareHeader(out, &header_, sizeof header_), MMSYSERR_NOERROR);
        EXPECT_EQ(header_.dwFlags, DWORD{WHDR_PREPARED | WHDR_BEGINLOOP | WHDR_ENDLOOP});
    }
    header_.dwFlags = WHDR_PREPARED;
    player_.Write(Pattern(400));  // ahead of it, so that it can be waited for by number
    EXPECT_MM(waveOutPause(out), MMSYSERR_NOERROR);
    header_.dwUser = 0;
    EXPECT_MM(waveOutWrite(out, &header_, sizeof header_), MMSYSERR_NOERROR);
    EXPECT_MM(waveOutWrite(out, &header_, sizeof header_), WAVERR_STILLPLAYING);
    EXPECT_MM(waveOutUnprepareHeader(out, &header_, sizeof header_), WAVERR_STILLPLAYING);
    EXPECT_MM(waveOutRestart(out), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    for (int i = 0; i < 2; ++i) {
        EXPECT_MM(waveOutUnprepareHeader(out, &header_, sizeof header_), MMSYSERR_NOERROR);
        EXPECT_EQ(header_.dwFlags & WHDR_PREPARED, 0u);
    }
}

}  // namespace
