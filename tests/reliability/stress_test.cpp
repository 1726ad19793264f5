// Several threads on several streams, with fixed seeds and a fixed number of operations, while the computer
// sleeps and wakes, and another port is opened and closed beside them.
#include <atomic>
#include <barrier>
#include <random>
#include <thread>

#include "tests/interleaving/stream.h"
#include "tests/reliability/answers.h"
#include "tests/reliability/tally.h"
#include "tests/support/driver_test.h"

namespace {

using interleaving::Message;
using interleaving::Stream;

constexpr unsigned Outputs = 3;  // and as many inputs
constexpr unsigned Clients = 4;
constexpr unsigned Rounds = 20;  // from an open to a close
#ifdef _WIN32
constexpr unsigned Operations = 25;  // of a client in a round; in Wine all of it runs slower
#else
constexpr unsigned Operations = 75;
#endif
constexpr unsigned OperationsBeside = 40;  // of the threads that open another port, and that sleep and wake
constexpr unsigned MostHeaders = 12;       // that a stream has at a time

class StressTest : public WithCards<DriverTest, 2> {
protected:
    // Any message but a close, which the system demands to be of one thread alone.
    static void Use(Stream& stream, unsigned what) {
        constexpr Message Messages[] = {Message::Position, Message::Stop,  Message::Start,
                                        Message::Start,    Message::Break, Message::Reset};
        if (what >= 60) {
            stream.Send(Messages[what % std::size(Messages)]);
            return;
        }
        if (what % 4 == 0) {
            stream.OnNextDone([&stream] {
                stream.Send(Message::Position);
                stream.Write(480);
            });
        }
        if (stream.Away() < MostHeaders) {
            const bool loops = what % 5 == 0;
            stream.Write(960, loops ? WHDR_BEGINLOOP | WHDR_ENDLOOP : 0, loops ? 2 : 0);
        }
    }

    // Opens its share of the streams, uses any of them, and closes its share again.
    static void BeClient(unsigned client, const std::vector<std::unique_ptr<Stream>>& streams,
                         std::barrier<>& together) {
        std::mt19937 random(client);
        for (unsigned round = 0; round < Rounds; ++round) {
            for (size_t own = client; own < streams.size(); own += Clients) {
                const MMRESULT result = streams[own]->Open(interleaving::Rate, own < Outputs ? 16 : 24);
                EXPECT_TRUE(result == MMSYSERR_NOERROR || IsRefusalOfOpen(result)) << result;
            }
            together.arrive_and_wait();
            for (unsigned i = 0; i < Operations; ++i) {
                Use(*streams[random() % streams.size()], static_cast<unsigned>(random() % 100));
            }
            together.arrive_and_wait();
            for (size_t own = client; own < streams.size(); own += Clients) {
                Stream& stream = *streams[own];
                stream.OnNextDone(nullptr);
                if (stream.IsOpen()) {
                    Always(stream.Send(Message::Shut));
                }
                EXPECT_EQ(stream.Away(), 0u) << "headers of stream " << own;
                EXPECT_EQ(stream.WrongCallbacks(), 0u) << "stream " << own;
            }
        }
        tally::Add(tally::Operations, Rounds * Operations);
    }
};

TEST_F(StressTest, EverythingAtOnce) {
    const DriverLibrary driver;
    ASSERT_TRUE(driver.IsLoaded());
    const std::string usage = test_system::Usage();
    std::vector<std::unique_ptr<Stream>> streams;
    for (unsigned i = 0; i < 2 * Outputs; ++i) {
        const unsigned device = i % Outputs;
        streams.push_back(std::make_unique<Stream>(
            driver, interleaving::StreamPlan{.Output = i < Outputs, .Card = device / 2, .Port = device % 2}));
    }
    std::atomic<unsigned> busy = 0;
    std::vector<std::thread> threads;
    const auto run = [&](std::function<void()> work) {
        ++busy;
        threads.emplace_back([&busy, work = std::move(work)] {
            work();
            --busy;
        });
    };
    std::barrier together(Clients);
    for (unsigned client = 0; client < Clients; ++client) {
        run([&, client] { BeClient(client, streams, together); });
    }
    run([&] {
        for (unsigned i = 0; i < OperationsBeside; ++i) {
            EXPECT_EQ(driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST), 1);
            Cards().PowerCycle(0);
            Cards().PowerCycle(1);
            EXPECT_EQ(driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME), 1);
        }
    });
    run([] {
        for (unsigned i = 0; i < OperationsBeside; ++i) {
            WavePlayer player;
            if (player.Open(3, PcmFormat(44100, 2, 16)) == MMSYSERR_NOERROR) {
                player.Write(Pattern(960));
                player.Shut();
                player.ExpectEachReturnedOnce();
            }
        }
    });
    while (busy != 0) {
        Cards().Advance(Millisecond);
        Cards().ForgetAudio();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Cards().OpenFiles(), 0u);
    test_system::ExpectUsage(usage);

    // The cards are as good as new.
    for (const UINT device : {0u, 1u, 2u, 3u}) {
        ExpectPlays(device, PcmFormat(96000, 2, 16));
    }
}

}  // namespace
