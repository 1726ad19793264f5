// Which cards the first load finds, what it asks them, and what the system then lists.
#include "tests/support/driver_test.h"

namespace {

// Everything that the discovery asks of one card but the initialisation of its registers.
Lines DiscoveryOf(unsigned card) {
    const std::string bind = "BIND_HANDLE " + std::to_string(card) + " control";
    return {bind,
            "RELEASE_CHANNEL",  // is it there?
            bind,
            "READ_PCI_CONFIG 08 1",
            "READ_NVRAM_PAGE FF80",
            "READ_NVRAM_PAGE FF00",
            "RELEASE_CHANNEL",
            bind,
            "GET_REGISTRY_PATH",
            "RELEASE_CHANNEL",
            bind,
            "RELEASE_CHANNEL"};
}

using FullMachineTest = WithCards<DriverTest, simulator::MaxCards>;

TEST_F(FullMachineTest, EveryCardIsAskedOnceAndGivesFourDevices) {
    const auto name = [](unsigned card) {
        return u"Card " + std::u16string(1, static_cast<char16_t>(u'A' + card));
    };
    for (unsigned card = 0; card < simulator::MaxCards; ++card) {
        StoreText(card, TEXT("Name"), name(card));
    }
    EXPECT_EQ(waveOutGetNumDevs(), 2 * simulator::MaxCards);
    EXPECT_EQ(waveInGetNumDevs(), 2 * simulator::MaxCards);
    Lines expected;
    for (unsigned card = 0; card < simulator::MaxCards; ++card) {
        EXPECT_EQ(DeviceName(2 * card), name(card) + u" Analog");
        EXPECT_EQ(DeviceName(2 * card + 1), name(card) + u" Digital");
        expected = expected + DiscoveryOf(card);
    }
    EXPECT_EQ(TraceText({"write", "read", "stall"}), expected);
    EXPECT_EQ(Cards().OpenFiles(), 0u) << "the driver keeps no card open without a stream";
}

class DiscoveryTest : public WithCards<DriverTest, 3> {
protected:
    // The answer of an output, and of the input of that number.
    static MMRESULT Capabilities(const DriverLibrary& library, UINT device) {
        WAVEOUTCAPSW output = {};
        WAVEINCAPSW input = {};
        const MMRESULT result =
            library.WaveOut(device, WODM_GETDEVCAPS, 0, reinterpret_cast<DWORD_PTR>(&output));
        EXPECT_EQ(library.WaveIn(device, WIDM_GETDEVCAPS, 0, reinterpret_cast<DWORD_PTR>(&input)), result);
        return result;
    }
    static MMRESULT Open(UINT device) { return WavePlayer().Open(device, PcmFormat(44100, 2, 16)); }
};

TEST_F(DiscoveryTest, EndsAtTheFirstCardThatIsMissing) {
    for (const unsigned missing : {0u, 1u}) {
        SCOPED_TRACE(missing);
        UnloadDriver();
        Cards().ClearTrace();
        Cards().SetPresent(missing, false);
        const DriverLibrary library;
        EXPECT_EQ(waveOutGetNumDevs(), 2 * missing);
        EXPECT_EQ(waveInGetNumDevs(), 2 * missing);
        for (const UINT device : {0u, 1u, 2u, 4u, 5u, 0xFFFFFFFFu}) {
            EXPECT_EQ(Capabilities(library, device),
                      device < 2 * missing ? MMSYSERR_NOERROR : MMSYSERR_BADDEVICEID)
                << device;
        }
        EXPECT_EQ(TraceText({"write", "read", "stall"}), missing == 0 ? Lines() : DiscoveryOf(0));
        Cards().SetPresent(missing, true);
    }
    UnloadDriver();
    AddFault("BIND_HANDLE:5");  // the four of card 0, then the probe of card 1
    EXPECT_EQ(waveOutGetNumDevs(), 2u);
}

TEST_F(DiscoveryTest, ALoadFailsWithoutTheMutexThatProcessesShare) {
    test_system::FailCall("CreateMutexW", 1);
    EXPECT_FALSE(DriverLibrary().IsLoaded());
    EXPECT_EQ(GetLastError(), DWORD{ERROR_DLL_INIT_FAILED});
    EXPECT_FALSE(TraceText().empty()) << "the discovery comes first";
    test_system::FailCall("CreateMutexW", 1);
    EXPECT_EQ(waveOutGetNumDevs(), 0u);
    UnloadDriver();
    test_system::FailCall("CreateMutexW", 2);
    EXPECT_EQ(waveOutGetNumDevs(), 6u) << "not even without the discovery's own is the next load harmed";
}

// The handle that initialises the card is refused: the output side's turn makes up for the input
// side's, and a card that neither could initialise is known but not enabled.
TEST_F(DiscoveryTest, ACardIsEnabledByItsFirstInitialisation) {
    AddFault("BIND_HANDLE:4");
    EXPECT_EQ(waveOutGetNumDevs(), 6u);
    EXPECT_EQ(Cards().CardRegister(0, 9) & 1, 1) << "initialised";
    UnloadDriver();

    AddFault("BIND_HANDLE:4");
    AddFault("BIND_HANDLE:5");
    const DriverLibrary library;
    EXPECT_EQ(waveOutGetNumDevs(), 4u);
    EXPECT_EQ(waveInGetNumDevs(), 4u);
    EXPECT_EQ(Capabilities(library, 0), MMSYSERR_NOTENABLED);
    EXPECT_EQ(Capabilities(library, 1), MMSYSERR_NOTENABLED);
    EXPECT_EQ(Open(0), MMSYSERR_NOTENABLED);
    EXPECT_EQ(Capabilities(library, 2), MMSYSERR_NOERROR);
}

}  // namespace
