// Every interleaving of a few messages: the thread of the first one is held before and after each of its
// requests in turn, meanwhile the others are sent, or are found to wait for it, and then it goes on. What
// comes of it must be what comes of the messages one after the other, in one order or another.
//
// A failing one is run again alone by its name:
//   KESTVOX_INTERLEAVING="one-output/playing/pause@3-before/close" kestvox_tests
//   --gtest_filter='Interleaving*'
// The beginning of a name runs all that begin so.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/interleaving/deadline.h"
#include "tests/interleaving/side.h"

namespace interleaving {

// Acts[0] is held, the others are sent meanwhile.
struct Script {
    static constexpr size_t Nobody = 99;

    Start From;
    std::vector<Act> Acts;
    size_t InCallback = Nobody;  // which act is done by the client, in the callback of the first stream
    int64_t Pause = 1000;        // microseconds that pass after each message
};

// Whether the environment variable KESTVOX_INTERLEAVINGS asks for it: "all" places where a message can be
// held, instead of some of those that are many, and every failure; "three" for the messages of a longer run
// besides.
bool IsAskedFor(const std::string& what);

// One of those that an act consists of.
struct SingleMessage {
    size_t Act;
    Message What;
};

class Explorer {
public:
    // One side for each program of the setting.
    Explorer(const Setting& setting, std::vector<Side*> sides);
    ~Explorer();
    Explorer(const Explorer&) = delete;
    Explorer& operator=(const Explorer&) = delete;

    void Explore(const Script& script);

private:
    struct Held {
        HoldPoint Point;
        bool Met;           // its thread came to that request
        unsigned Requests;  // of the first act
    };

    bool IsAskedForByName(const Script& script) const;
    std::string Recipe(const Script& script, const std::string& place) const;
    std::vector<std::string> SerialOutcomes(const Script& script, unsigned* requests);
    bool RunHeld(const Script& script, const HoldPoint& point, const std::vector<std::string>& serial);

    void Prepare(Start from);
    void PrepareStream(unsigned stream, Start from);
    std::string Outcome(const Script& script, const std::vector<int64_t>& answers);
    std::string Snapshot(bool buffers);
    std::vector<int64_t> SendInTurn(const Script& script, const std::vector<SingleMessage>& order,
                                    unsigned* requests);
    std::vector<int64_t> SendHeld(const Script& script, Held& held);

    // What must be so whatever went before. Each notes what is wrong.
    void AfterFree(const Script& script);
    std::string WakeUp(const Script& script);
    void ExpectRestart();
    void ExpectAllBack();
    void ExpectFreshStart();
    void ExpectEnd();
    void ExpectAnotherRate();

    bool Verdict(const std::string& recipe, const std::string& outcome,
                 const std::vector<std::string>& serial);
    void Fault(const std::string& what);
    std::vector<uint64_t> MovedIn(int64_t microseconds);
    Side& OwnerOf(unsigned stream) { return *sides_[setting_.Streams[stream].Program]; }
    bool IsOpen(unsigned stream) { return OwnerOf(stream).Do(Step::IsOpen, stream) != 0; }
    int64_t Send(Message message, unsigned stream) {
        return OwnerOf(stream).Do(Step::Send, static_cast<int64_t>(message), stream);
    }
    void Advance(int64_t microseconds);
    bool HasReleased(const Side& side);
    bool IsEnough() const;
    void Join();
    void Leave();

    const Setting setting_;
    const std::vector<Side*> sides_;
    const std::string filter_;
    const bool thorough_;
    Deadline deadline_;
    std::vector<std::string> faults_;  // of the interleaving under way
    unsigned findings_ = 0;
    unsigned long run_ = 0;
    unsigned scripts_ = 0;
};

}  // namespace interleaving
