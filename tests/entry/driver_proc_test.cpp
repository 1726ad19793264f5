// The answers to installable-driver messages, and what a driver that is let go leaves behind.
#include "tests/support/driver_test.h"

namespace {

class DriverProcTest : public DriverTest {
protected:
    static void CALLBACK CountMessage(HDRVR, UINT, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
        ++*reinterpret_cast<int*>(instance);
    }

    // Whether somebody has it.
    static bool MutexExists(const WCHAR* name) {
        const HANDLE mutex = CreateMutexW(nullptr, FALSE, name);
        const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
        CloseHandle(mutex);
        return existed;
    }

    // The driver's instance of a stream that tells every message to `messages`.
    static DWORD_PTR OpenOutput(const DriverLibrary& library, UINT device, int* messages,
                                MMRESULT expected = MMSYSERR_NOERROR) {
        DWORD_PTR user = 0;
        EXPECT_EQ(library.Open(true, device, PcmFormat(44100, 2, 16), CountMessage, messages, &user),
                  expected);
        return user;
    }
};

TEST_F(DriverProcTest, EveryMessageHasItsAnswer) {
    const struct {
        UINT Message;
        LPARAM Param1;
        LRESULT Answer;
    } cases[] = {
        {DRV_LOAD, 0, 1},
        {DRV_ENABLE, 0, 1},
        {DRV_OPEN, 0, 1},
        {DRV_QUERYCONFIGURE, 0, 1},
        // 11 to 14 and what is not known: the system's default answer
        {DRV_EXITSESSION, 0, 0},
        {14, 0, 0},
        {16, 0, 0},
        {DRV_POWER, 0, 1},
        {DRV_POWER, 1, 1},
        {DRV_POWER, 4, 1},
        {DRV_POWER, -1, 1},
        {DRV_CLOSE, 0, 1},
        {DRV_DISABLE, 0, 1},
        {DRV_FREE, 0, 1},
        {DRV_INSTALL, 0, DRVCNF_RESTART},
        {DRV_CONFIGURE, 0, DRVCNF_RESTART},
        // No configuration is shown any more in this process.
        {DRV_REMOVE, 0, DRVCNF_RESTART},
        {DRV_CONFIGURE, 0, DRVCNF_RESTART},
    };
    const DriverLibrary library;
    Cards().ClearTrace();
    for (const auto& test : cases) {
        EXPECT_EQ(library.DriverProc(test.Message, test.Param1), test.Answer)
            << "message " << test.Message << ", " << test.Param1;
    }
    EXPECT_EQ(TraceText(), Lines{}) << "none of them is a card's affair";
}

// The library stays loaded between DRV_FREE and the next DRV_LOAD. Clients hear of their open, and never of a
// close.
TEST_F(DriverProcTest, FreeClosesTheStreamsAndLoadWorksAgain) {
    const std::string before = test_system::Usage();
    int messages = 0;
    {
        const DriverLibrary library;
        for (int life = 0; life < 3; ++life) {
            SCOPED_TRACE(life);
            EXPECT_EQ(library.DriverProc(DRV_LOAD), 1);
            EXPECT_TRUE(MutexExists(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex")));
            ASSERT_NE(OpenOutput(library, 0, &messages), 0u);
            ASSERT_NE(OpenOutput(library, 1, &messages), 0u);
            EXPECT_EQ(library.DriverProc(DRV_FREE), 1);
            EXPECT_EQ(Cards().OpenFiles(), 0u);
            EXPECT_FALSE(Cards().ChannelClaimed(0, 2) || Cards().ChannelClaimed(0, 3));
            EXPECT_FALSE(MutexExists(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex")));
            Cards().ClearTrace();
            EXPECT_EQ(library.DriverProc(DRV_FREE), 1);
            EXPECT_EQ(OpenOutput(library, 0, &messages, MMSYSERR_NODRIVER), 0u);
            EXPECT_EQ(TraceText(), Lines{}) << "nothing is left for the second, and nothing opens";
        }
        test_system::FailCall("CreateMutexW", 1);
        EXPECT_EQ(library.DriverProc(DRV_LOAD), 1);
        EXPECT_EQ(OpenOutput(library, 0, &messages, MMSYSERR_NODRIVER), 0u) << "not without the mutex";
        EXPECT_EQ(library.DriverProc(DRV_LOAD), 1);
        ASSERT_NE(OpenOutput(library, 0, &messages), 0u);
    }
    EXPECT_EQ(Cards().OpenFiles(), 0u) << "unloading is enough";
    EXPECT_EQ(messages, 7);
    test_system::ExpectUsage(before);
}

}  // namespace
