// One program's part of an interleaving, told step by step what to do: the test's own process or another one.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/requests/request_hold.h"
#include "simulator/simulator.h"
#include "tests/interleaving/message.h"
#include "tests/interleaving/stream.h"
#include "tests/interleaving/worker.h"
#include "tests/processes/companion.h"

namespace interleaving {

enum Leftover : int64_t { NothingLeft = 0, FilesOpen = 1, MemoryOrHandles = 2 };

// Where an act is held.
struct HoldPoint {
    unsigned Nth = 0;  // request; 0: nowhere
    bool After = false;
    bool InCallback = false;  // the act is done by the client's callback for the stream's next header
};

// The steps. Each answers a number; those that tell of nothing answer 0.
class Side {
public:
    explicit Side(const Setting& setting) : setting_(setting) {}

    int64_t Join(bool shared);  // the cards, and the driver loaded; on a machine of other programs, too
    int64_t Leave();            // unloads; answers what was left behind
    int64_t Reload();           // after DRV_FREE: Leave, and the driver loaded anew
    int64_t Renew();            // the streams are as if they had never been
    int64_t Send(Message message, unsigned stream);
    int64_t Open(unsigned stream, DWORD rate) { return streams_[stream]->Open(rate); }
    int64_t Hand(unsigned stream, DWORD length, DWORD flags, DWORD loops) {
        return streams_[stream]->Write(length, flags, loops);
    }

    // An act, on a thread of its own.
    int64_t Begin(unsigned thread, Message message, unsigned stream, unsigned nth, bool after,
                  bool inCallback);
    int64_t AwaitHeld(unsigned thread);                                             // 1 held, 0 it has ended
    int64_t LetGo(unsigned thread);                                                 // ... that is held
    int64_t AwaitDoneOrWaiting(unsigned thread);                                    // 1 done, 0 waiting
    int64_t Await(unsigned thread);                                                 // its answer
    int64_t Requests(unsigned thread) { return actors_[thread].Hold->Requests(); }  // that it made

    int64_t IsOpen(unsigned stream) { return streams_[stream]->IsOpen() ? 1 : 0; }
    int64_t Away(unsigned stream) { return streams_[stream]->Away(); }                // headers
    int64_t Misreturned(unsigned stream) { return streams_[stream]->Misreturned(); }  // headers
    int64_t Advance(int64_t microseconds);
    int64_t PowerCycle();  // every card, as the computer sleeps
    int64_t Leftovers() { return LeftoversOver(loaded_); }
    int64_t Elsewhere(bool held);  // whether a thread of another program is held

private:
    // A thread, and the act that is under way on it.
    struct Actor {
        std::optional<simulator::RequestHold> Hold;
        std::atomic<int64_t> Answer = 0;
        Worker Thread;
    };

    void Load();
    int64_t Unload();
    int64_t LeftoversOver(const std::string& usage);
    int64_t Free();

    const Setting setting_;
    std::unique_ptr<simulator::Simulator> cards_;
    std::optional<DriverLibrary> driver_;  // streams refer to its place
    std::atomic<bool> freed_ = false;
    std::string unloaded_;  // what the process had taken before the driver was loaded, and with it
    std::string loaded_;
    std::vector<std::unique_ptr<Stream>> streams_;
    std::optional<simulator::RequestHold::Elsewhere> elsewhere_;
    std::array<Actor, 3> actors_;
};

// The way to a side: line.Do<&Side::Open>(stream, rate).
class Line {
public:
    explicit Line(Side& here) : side_(&here) {}
    // The companion runs Serve.
    explicit Line(Companion& there) : companion_(&there) {}

    template <auto Step, typename... Arguments>
    int64_t Do(Arguments... arguments) {
        return Run(Call<Step>, {static_cast<int64_t>(arguments)...});
    }

    static void Serve(Companion& test, Side& side);

private:
    using Numbers = std::array<int64_t, 6>;
    using Action = int64_t (*)(Side& side, const Numbers& arguments);

    template <auto Step>
    static int64_t Call(Side& side, const Numbers& arguments) {
        return Apply(side, Step, arguments);
    }
    template <typename... Parameters>
    static int64_t Apply(Side& side, int64_t (Side::*step)(Parameters...), const Numbers& arguments) {
        const auto run = [&]<size_t... Places>(std::index_sequence<Places...>) {
            return (side.*step)(static_cast<Parameters>(arguments[Places])...);
        };
        return run(std::index_sequence_for<Parameters...>());
    }
    int64_t Run(Action action, const Numbers& arguments);

    Side* side_ = nullptr;
    Companion* companion_ = nullptr;
};

}  // namespace interleaving
