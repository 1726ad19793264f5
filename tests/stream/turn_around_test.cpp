// What a buffer of a running stream costs: no memory, and few rounds of the mutex of all processes.
#include <thread>

#include "tests/support/driver_test.h"

namespace {

constexpr unsigned Buffers = 8;
constexpr unsigned Rounds = 10;
constexpr unsigned MutexRounds = 3;  // when it is accepted, when it is handed over, when it has completed

class TurnAroundTest : public DriverTest {
protected:
    // Of a stream whose client hands every buffer in again.
    template <typename Client>
    void ExpectLittleTaken(Client& client) {
        unsigned back = 0;
        const auto goOn = [&] {
            back += Rounds * Buffers;
            while (client.DoneCount() < back && Cards().AdvanceToNextCompletion(Second)) {
            }
            ASSERT_GE(client.DoneCount(), back);
        };
        goOn();
        const unsigned long before = test_system::MutexReleases();
        goOn();
        EXPECT_LE(test_system::MutexReleases() - before, MutexRounds * Rounds * Buffers);
        for (const char* function : {"HeapAlloc", "GlobalAlloc", "GlobalReAlloc", "GlobalLock"}) {
            test_system::FailCall(function, 1);
            goOn();
            EXPECT_TRUE(test_system::CallFailuresAreWaiting()) << function << " was called";
            test_system::ClearCallFailures();
        }
        client.OnDone(nullptr);
    }
};

TEST_F(TurnAroundTest, TakesNoMemoryAndFewRounds) {
    StoreSetting(0, TEXT("DitherADC"), 4);
    for (const WORD bits : {WORD{16}, WORD{24}}) {
        SCOPED_TRACE(bits);
        WavePlayer player;      // given to the card as it is, and converted
        WaveRecorder recorder;  // dithered, and packed
        player.OnDone([&player](WAVEHDR& header) { player.HandIn(header); });
        recorder.OnDone([&recorder](WAVEHDR& header) { recorder.HandIn(header); });
        ASSERT_EQ(player.Open(0, PcmFormat(44100, 2, bits)), MMSYSERR_NOERROR);
        for (unsigned i = 0; i < Buffers; ++i) {
            ASSERT_EQ(player.Write(Pattern(1200)), MMSYSERR_NOERROR);
        }
        ExpectLittleTaken(player);
        player.Shut();
        ASSERT_EQ(recorder.Open(0, PcmFormat(44100, 2, bits)), MMSYSERR_NOERROR);
        for (unsigned i = 0; i < Buffers; ++i) {
            ASSERT_EQ(recorder.Add(1200), MMSYSERR_NOERROR);
        }
        ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        ExpectLittleTaken(recorder);
    }
}

// As a trace has it beside each header.
TEST_F(TurnAroundTest, TellsHowOftenTheMutexWasWaitedFor) {
    using Kind = simulator::HeaderEvent::Kind;
    const auto waits = [this] { return Cards().NoteHeader(Kind::Queued, 0, 2, nullptr).MutexWaits; };
    WavePlayer player(0, PcmFormat(44100, 2, 16));
    const uint64_t before = waits();
    ASSERT_EQ(player.Write(Pattern(1200)), MMSYSERR_NOERROR);
    EXPECT_EQ(waits(), before) << "there was nobody to wait for";

    const HANDLE mutex = CreateMutexW(nullptr, FALSE, TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex"));
    ASSERT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    std::thread writer([&player] { EXPECT_EQ(player.Write(Pattern(1200)), MMSYSERR_NOERROR); });
    EXPECT_TRUE(ComesTrue([&] { return waits() != before; }));
    ReleaseMutex(mutex);
    writer.join();
    CloseHandle(mutex);
}

}  // namespace
