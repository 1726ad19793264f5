// Loading and unloading the library: what each does once, and what makes a load fail.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"

namespace {

class LoadTest : public DriverTest {
protected:
    bool CardsWereAsked() { return !TraceText().empty(); }
};

TEST_F(LoadTest, DiscoversOnceUntilTheLastUnload) {
    auto first = std::make_unique<DriverLibrary>();
    ASSERT_TRUE(CardsWereAsked());
    Cards().ClearTrace();
    {
        const DriverLibrary second;
        EXPECT_EQ(waveOutGetNumDevs(), 2u);
        WavePlayer player;
        EXPECT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
        const std::vector<std::string> lines = TraceText();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "BIND_HANDLE 0 control"), 0);
    }
    UnloadDriver();
    first.reset();
    Cards().ClearTrace();
    const DriverLibrary again;
    EXPECT_TRUE(CardsWereAsked());
}

TEST_F(LoadTest, FailsWithoutTheMutexThatProcessesShare) {
    test_system::FailCall("CreateMutexW", 1);
    {
        const DriverLibrary library;
        EXPECT_FALSE(library.IsLoaded());
        EXPECT_EQ(GetLastError(), DWORD{ERROR_DLL_INIT_FAILED});
    }
    EXPECT_TRUE(CardsWereAsked()) << "the discovery comes first";
    test_system::FailCall("CreateMutexW", 1);
    EXPECT_EQ(waveOutGetNumDevs(), 0u);
    UnloadDriver();
    EXPECT_EQ(waveOutGetNumDevs(), 2u) << "the next load is not harmed";
}

TEST_F(LoadTest, DiscoversEvenWhenNothingCanKeepOthersOut) {
    test_system::FailCall("CreateMutexW", 2);
    EXPECT_EQ(waveOutGetNumDevs(), 2u);
}

}  // namespace
