// Every interleaving of a few messages: the thread of the first one is held before and after each of its
// requests in turn, meanwhile the others are sent, or are found to wait for it, and then it goes on. What
// comes of it must be what comes of the messages one after the other, in one order or another.
//
// A failing one is run again alone by its name:
//   KESTVOX_INTERLEAVING="one-output/playing/pause@3-before/close" kestvox_tests
//   --gtest_filter='*Interleaving*'
// The beginning of a name runs all that begin so, an empty one all. Each name is printed then as its run
// begins, to tell which of them crashes or hangs.
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

class Explorer {
public:
    // One side for each program of the setting. Of the scripts, those of the piece are explored.
    Explorer(const Setting& setting, std::vector<Line> sides, Piece piece);
    ~Explorer();
    Explorer(const Explorer&) = delete;
    Explorer& operator=(const Explorer&) = delete;

    void Explore(const Script& script);

private:
    void Prepare(const Script& script, const std::string& recipe);
    std::string Recipe(const Script& script, const std::string& place) const;
    std::vector<std::string> SerialOutcomes(const Script& script, unsigned* requests);
    void RunHeld(const Script& script, const HoldPoint& point, const std::vector<std::string>& serial);

    void Begin(const Script& script, size_t act, Message message, HoldPoint point);
    std::vector<int64_t> SendInTurn(const Script& script, const std::vector<size_t>& order,
                                    unsigned* requests);
    std::vector<int64_t> SendHeld(const Script& script, const HoldPoint& point, bool* met);
    std::string Outcome(const Script& script, const std::vector<int64_t>& answers);
    bool Verdict(const std::string& recipe, const std::string& outcome,
                 const std::vector<std::string>& serial);
    Line& SideOf(const Script& script, size_t act) { return scene_.SideOf(script.Acts[act].Program); }

    const Setting setting_;
    Scene scene_;
    const Piece piece_;
    const char* const filter_;  // null: it is not set
    unsigned findings_ = 0;
    unsigned long run_ = 0;
    unsigned scripts_ = 0;
};

}  // namespace interleaving
