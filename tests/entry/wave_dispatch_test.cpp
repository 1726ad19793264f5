// Wave messages before they reach a stream: which need one, and which mean nothing.
#include "tests/support/driver_library.h"
#include "tests/support/output_test.h"

namespace {

constexpr UINT DirectMode = 0x4002;

class WaveDispatchTest : public OutputTest {};

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

TEST_F(WaveDispatchTest, UnknownMessagesAreNotSupported) {
    ASSERT_EQ(player_.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    for (const UINT message : {UINT{WODM_PREPARE}, UINT{WODM_UNPREPARE}, UINT{WODM_GETPITCH},
                               UINT{WODM_SETPITCH}, UINT{WODM_GETPLAYBACKRATE}, UINT{WODM_SETPLAYBACKRATE},
                               21u, UINT{WIDM_ADDBUFFER}, 0x3FFFu, 0x4003u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Send(message), MMSYSERR_NOTSUPPORTED) << message;
    }
    EXPECT_EQ(TraceText(), std::vector<std::string>{});
}

TEST_F(WaveDispatchTest, OfThePrivateMessagesAnInputKnowsDirectModeOnly) {
    HWAVEIN input = nullptr;
    ASSERT_EQ(waveInOpen(&input, 0, PcmFormat(44100, 2, 16).Get(), 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    for (const UINT message :
         {UINT{WIDM_PREPARE}, UINT{WIDM_UNPREPARE}, 61u, UINT{WODM_PAUSE}, 0x4000u, 0x4001u, 0x4003u}) {
        EXPECT_EQ(waveInMessage(input, message, 0, 0), MMSYSERR_NOTSUPPORTED) << message;
    }
    EXPECT_EQ(waveInMessage(input, DirectMode, 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(TraceText(), std::vector<std::string>{"write port 0 = C0 / C0"});
    EXPECT_EQ(waveInClose(input), MMSYSERR_NOERROR);
}

}  // namespace
