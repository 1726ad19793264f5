// One program's part of an interleaving, told step by step what to do: the test's own process or another one.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "simulator/requests/request_hold.h"
#include "simulator/simulator.h"
#include "tests/interleaving/message.h"
#include "tests/interleaving/stream.h"
#include "tests/processes/companion.h"

namespace interleaving {

// Where an act is held.
struct HoldPoint {
    unsigned Nth = 0;  // request; 0: nowhere
    bool After = false;
    bool InCallback = false;  // the act is done by the client's callback for the stream's next header
};

// The steps. What they take and answer are numbers.
class Side {
public:
    explicit Side(const Setting& setting) : setting_(setting) {}

    void Join(bool shared);  // the cards, and the driver loaded; on a machine of other programs, too
    bool Leave();            // unloads; whether nothing was left behind
    bool Reload();           // after DRV_FREE: Leave, and the driver loaded anew
    void Renew();            // the streams are as if they had never been
    int64_t Send(Message message, unsigned stream);
    MMRESULT Open(unsigned stream, DWORD rate) { return streams_[stream]->Open(rate); }
    MMRESULT Hand(unsigned stream, DWORD length, DWORD flags, DWORD loops) {
        return streams_[stream]->Write(length, flags, loops);
    }

    // An act, on a thread of its own.
    void Begin(unsigned thread, Message message, unsigned stream, unsigned nth, bool after, bool inCallback);
    bool AwaitHeld(unsigned thread) {  // false: the thread has ended
        return actors_[thread].Hold->AwaitHeldOrEnded() == simulator::RequestHold::State::Held;
    }
    void LetGo(unsigned thread) { actors_[thread].Hold->LetGo(); }
    // True when the act is done, false when no thread of the process has had anything to do for a while, or
    // one looks again and again for something that does not come. A thread that is judged wrongly goes on all
    // the same: the next step only comes a little early.
    bool AwaitDoneOrWaiting(unsigned thread);
    int64_t Await(unsigned thread);                                                  // its answer
    unsigned Requests(unsigned thread) { return actors_[thread].Hold->Requests(); }  // that it made

    bool IsOpen(unsigned stream) { return streams_[stream]->IsOpen(); }
    unsigned Away(unsigned stream) { return streams_[stream]->Away(); }  // headers
    unsigned WrongCallbacks(unsigned stream) { return streams_[stream]->WrongCallbacks(); }
    void Advance(int64_t microseconds) { cards_->Advance(microseconds); }
    void PowerCycle();  // every card, as the computer sleeps
    bool HasNothingLeft() { return IsBackTo(loaded_); }
    void Elsewhere(bool held);  // whether a thread of another program is held

private:
    // A thread, and the act that is under way on it.
    struct Actor {
        std::optional<simulator::RequestHold> Hold;
        std::atomic<int64_t> Answer = 0;
        std::future<void> Thread;
    };

    void Load();
    bool Unload();
    bool IsBackTo(const std::string& usage);
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

// The way to a side: line.Do<&Side::Open>(stream, rate). A step without an answer answers 0.
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
    template <typename Result, typename... Parameters>
    static int64_t Apply(Side& side, Result (Side::*step)(Parameters...), const Numbers& arguments) {
        const auto run = [&]<size_t... Places>(std::index_sequence<Places...>) {
            return (side.*step)(static_cast<Parameters>(arguments[Places])...);
        };
        if constexpr (std::is_void_v<Result>) {
            run(std::index_sequence_for<Parameters...>());
            return 0;
        } else {
            return static_cast<int64_t>(run(std::index_sequence_for<Parameters...>()));
        }
    }
    int64_t Run(Action action, const Numbers& arguments);

    Side* side_ = nullptr;
    Companion* companion_ = nullptr;
};

}  // namespace interleaving
