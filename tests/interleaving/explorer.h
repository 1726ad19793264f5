// Every interleaving of a few messages: the thread of the first one is held before and after each of its
// requests in turn, meanwhile the others are sent, or are found to wait for it, and then it goes on. What
// comes of it must be what comes of the messages one after the other, in one order or another.
//
// A failing one is run again alone by its name:
//   KESTVOX_INTERLEAVING="one-output/playing/pause@3-before/close" kestvox_tests
//   --gtest_filter='*Interleaving*'
// The beginning of a name runs all that begin so.
#pragma once

#include <string>
#include <vector>

#include "tests/interleaving/scene.h"
#include "tests/reliability/stride.h"

namespace interleaving {

// Acts[0] is held, the others are sent meanwhile.
struct Script {
    static constexpr size_t Nobody = 99;

    Start From;
    std::vector<Act> Acts;
    size_t InCallback = Nobody;  // which act is done by the client, in the callback of the first stream
    int64_t Pause = Scene::Millisecond;  // that passes after each message
};

// Whether the environment variable KESTVOX_INTERLEAVINGS asks for it: "all" places where a message can be
// held, instead of some of those that are many, and every failure; "three" for the messages of a longer run
// besides.
bool IsAskedFor(const std::string& what);

class Explorer {
public:
    // One side for each program of the setting. Of the scripts, those of the piece are explored.
    Explorer(const Setting& setting, std::vector<Line> sides, Piece piece);
    ~Explorer();
    Explorer(const Explorer&) = delete;
    Explorer& operator=(const Explorer&) = delete;

    void Explore(const Script& script);

private:
    // One of the messages that an act consists of.
    struct SingleMessage {
        size_t Act;
        Message What;
    };
    static std::vector<std::vector<SingleMessage>> Orders(const Script& script);

    bool IsAskedForByName(const Script& script) const;
    std::string Recipe(const Script& script, const std::string& place) const;
    std::vector<std::string> SerialOutcomes(const Script& script, unsigned* requests);
    void RunHeld(const Script& script, const HoldPoint& point, const std::vector<std::string>& serial);

    void Begin(const Script& script, size_t act, Message message, HoldPoint point);
    std::vector<int64_t> SendInTurn(const Script& script, const std::vector<SingleMessage>& order,
                                    unsigned* requests);
    std::vector<int64_t> SendHeld(const Script& script, const HoldPoint& point, bool* met);
    std::string Outcome(const Script& script, const std::vector<int64_t>& answers);
    bool Verdict(const std::string& recipe, const std::string& outcome,
                 const std::vector<std::string>& serial);
    bool IsEnough() const;
    Line& SideOf(const Script& script, size_t act) { return scene_.SideOf(script.Acts[act].Program); }

    const Setting setting_;
    Scene scene_;
    const Piece piece_;
    const std::string filter_;
    const bool thorough_;
    unsigned findings_ = 0;
    unsigned long run_ = 0;
    unsigned scripts_ = 0;
};

}  // namespace interleaving
