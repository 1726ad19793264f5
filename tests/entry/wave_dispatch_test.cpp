// Wave messages before they reach a stream: which need one, and which mean nothing.
#include "tests/support/output_test.h"

namespace {

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
    for (const UINT message : {SavePci, RestorePci, DirectMode, 0u, 1u, 2u}) {
        EXPECT_EQ(library.WaveOut(0, message, 0), MMSYSERR_INVALPARAM) << message;
        EXPECT_EQ(library.WaveIn(0, message, 0), MMSYSERR_INVALPARAM) << message;
    }
    EXPECT_EQ(TraceText(), Lines{});
}

// Of the private messages an input knows direct mode only.
TEST_F(WaveDispatchTest, UnknownMessagesAreNotSupported) {
    Open();
    const WaveRecorder recorder(0, PcmFormat(44100, 2, 16));
    Cards().ClearTrace();
    for (const UINT message : {UINT{WODM_PREPARE}, UINT{WODM_UNPREPARE}, UINT{WODM_GETPITCH},
                               UINT{WODM_SETPITCH}, UINT{WODM_GETPLAYBACKRATE}, UINT{WODM_SETPLAYBACKRATE},
                               21u, UINT{WIDM_ADDBUFFER}, 0x3FFFu, 0x4003u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Send(message), MMSYSERR_NOTSUPPORTED) << message;
    }
    for (const UINT message :
         {UINT{WIDM_PREPARE}, UINT{WIDM_UNPREPARE}, 61u, UINT{WODM_PAUSE}, SavePci, RestorePci, 0x4003u}) {
        EXPECT_EQ(waveInMessage(recorder.Handle(), message, 0, 0), MMSYSERR_NOTSUPPORTED) << message;
    }
    EXPECT_EQ(waveInMessage(recorder.Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(TraceText(), Lines{"write port 0 = C0 / C0"});
}

}  // namespace
