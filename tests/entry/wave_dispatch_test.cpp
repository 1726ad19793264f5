// Wave messages before they reach a stream: which need one, and which mean nothing.
#include "tests/support/driver_library.h"
#include "tests/support/output_test.h"
#include "tests/support/wave_recorder.h"

namespace {

constexpr UINT DirectMode = 0x4002;

using WaveDispatchTest = OutputTest;

TEST_F(WaveDispatchTest, WithoutAStreamEveryMessageIsInvalid) {
    const DriverLibrary library;
    Cards().ClearTrace();
    for (UINT message = WODM_CLOSE; message <= 30; ++message) {
        EXPECT_EQ(library.WaveOut(0, message, 0), MMSYSERR_INVALPARAM) << message;
    }
    for (UINT message = WIDM_CLOSE; message <= 70; ++message) {
        EXPECT_EQ(library.WaveIn(0, message, 0), MMSYSERR_INVALPARAM) << message;
    }
    for (const UINT message : {0x4000u, 0x4001u, 0x4002u, 0u, 1u, 2u}) {
        EXPECT_EQ(library.WaveOut(0, message, 0), MMSYSERR_INVALPARAM) << message;
        EXPECT_EQ(library.WaveIn(0, message, 0), MMSYSERR_INVALPARAM) << message;
    }
    EXPECT_EQ(TraceText(), std::vector<std::string>{});
}

// Of the private messages an input knows direct mode only.
TEST_F(WaveDispatchTest, UnknownMessagesAreNotSupported) {
    WaveRecorder recorder;
    ASSERT_EQ(player_.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    ASSERT_EQ(recorder.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    for (const UINT message : {UINT{WODM_PREPARE}, UINT{WODM_UNPREPARE}, UINT{WODM_GETPITCH},
                               UINT{WODM_SETPITCH}, UINT{WODM_GETPLAYBACKRATE}, UINT{WODM_SETPLAYBACKRATE},
                               21u, UINT{WIDM_ADDBUFFER}, 0x3FFFu, 0x4003u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Send(message), MMSYSERR_NOTSUPPORTED) << message;
    }
    for (const UINT message :
         {UINT{WIDM_PREPARE}, UINT{WIDM_UNPREPARE}, 61u, UINT{WODM_PAUSE}, 0x4000u, 0x4001u, 0x4003u}) {
        EXPECT_EQ(waveInMessage(recorder.Handle(), message, 0, 0), MMSYSERR_NOTSUPPORTED) << message;
    }
    EXPECT_EQ(waveInMessage(recorder.Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(TraceText(), std::vector<std::string>{"write port 0 = C0 / C0"});
}

}  // namespace
