// One program's part of an interleaving, told step by step what to do: the test's own process or another one.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "simulator/requests/request_hold.h"
#include "simulator/simulator.h"
#include "tests/interleaving/message.h"
#include "tests/interleaving/stream.h"
#include "tests/interleaving/worker.h"
#include "tests/processes/companion.h"

namespace interleaving {

// Each answers a number; those that tell of nothing answer 0.
enum class Step {
    Join,                // the cards, and the driver loaded; `a` 1 on a machine of other programs, too
    Leave,               // unloads; answers what was left behind, below
    Reload,              // after DRV_FREE: Leave, and the driver loaded anew
    Renew,               // the streams are as if they had never been
    Send,                // message `a` to stream `b`, on the calling thread; its answer
    Open,                // stream `a` at rate `b`
    Hand,                // stream `a` a header of length `b`, `c` loop flags, `d` loops
    Begin,               // on thread `a`: the act (message `b`, stream `c`), held as `d` says (HoldCode)
    AwaitHeld,           // thread `a`: 1 held, 0 it has ended
    LetGo,               // thread `a`
    AwaitDoneOrWaiting,  // thread `a`: 1 done, 0 waiting
    Await,               // thread `a`: the act's answer
    Requests,            // thread `a`: how many requests the act made
    IsOpen,              // stream `a`
    Away,                // headers of stream `a`
    Misreturned,         // headers of stream `a`
    Advance,             // by `a` microseconds
    PowerCycle,          // every card, as the computer sleeps
    Leftovers,           // what was taken since the driver was loaded and not given back, below
    Elsewhere,           // a thread of another program is held (1), or no more (0)
    End,
};

// What Leave and Leftovers find.
enum Leftover : int64_t { NothingLeft = 0, FilesOpen = 1, MemoryOrHandles = 2 };

inline constexpr unsigned Threads = 3;  // that messages are sent on

struct HoldPoint {
    unsigned Nth = 0;
    simulator::RequestHold::Where Where = simulator::RequestHold::Where::Before;
    bool InCallback = false;  // the act is done by the client's callback for the stream's next header

    int64_t Code() const {
        return Nth * 4 + (Where == simulator::RequestHold::Where::After ? 2 : 0) + (InCallback ? 1 : 0);
    }
    static HoldPoint Of(int64_t code) {
        return {
            static_cast<unsigned>(code / 4),
            (code & 2) != 0 ? simulator::RequestHold::Where::After : simulator::RequestHold::Where::Before,
            (code & 1) != 0};
    }
};

class Side {
public:
    virtual ~Side() = default;
    virtual int64_t Do(Step step, int64_t a = 0, int64_t b = 0, int64_t c = 0, int64_t d = 0) = 0;
};

class LocalSide final : public Side {
public:
    explicit LocalSide(const Setting& setting) : setting_(setting) {}

    int64_t Do(Step step, int64_t a, int64_t b, int64_t c, int64_t d) override;

private:
    // A thread, and the act that is under way on it.
    struct Actor {
        Worker Thread;
        std::optional<simulator::RequestHold> Hold;
        std::atomic<MMRESULT> Answer = 0;
    };

    void Join(bool shared);
    void Load();
    int64_t Unload();
    int64_t LeftoversOver(const std::string& usage);
    MMRESULT Send(Message message, unsigned stream);
    MMRESULT Free();
    void Begin(Actor& actor, Message message, unsigned stream, HoldPoint hold);
    void BeginInCallback(Actor& actor, Message message, unsigned stream);
    int64_t Await(Actor& actor);

    const Setting setting_;
    std::unique_ptr<simulator::Simulator> cards_;
    std::optional<DriverLibrary> driver_;  // streams refer to its place
    std::atomic<bool> freed_ = false;
    std::string unloaded_;  // what the process had taken before the driver was loaded, and with it
    std::string loaded_;
    std::vector<std::unique_ptr<Stream>> streams_;
    std::optional<simulator::RequestHold::Elsewhere> elsewhere_;
    Actor actors_[Threads];
};

// The part of a companion, which runs ServeSide.
class RemoteSide final : public Side {
public:
    explicit RemoteSide(Companion& companion) : companion_(companion) {}
    ~RemoteSide() override { Do(Step::End, 0, 0, 0, 0); }
    RemoteSide(const RemoteSide&) = delete;
    RemoteSide& operator=(const RemoteSide&) = delete;

    int64_t Do(Step step, int64_t a, int64_t b, int64_t c, int64_t d) override;

private:
    Companion& companion_;
};

void ServeSide(Companion& test, Side& side);

}  // namespace interleaving
