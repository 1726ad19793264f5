// What another program on the machine plays, on its way from the output's connector to an input's.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

#include "simulator/connectors/scene_syntax.h"
#include "simulator/machine/listener.h"
#include "tools/machine/scene.h"
#include "tools/streams/side_work.h"

namespace kestvox {

// The other program and this one get to run when the computer lets them. So the cable is a second long: that
// much is waited for before the first frame goes on, and nothing is missing behind it as long as neither has
// to wait longer.
class CableFeed final : public SideWork {
public:
    // The machine is shared and runs in real time, and the output is there; CommandError otherwise, which
    // begins with `what`. `rate` is that of the recording, in Hz. The scene outlives this.
    CableFeed(const Scene& scene, const simulator::Connector& output, unsigned rate, const std::string& what);

    // Silence before the first frame and behind the last one. It may outlive this.
    simulator::InputSignal Signal() const;

    // Frames of the signal up to the last one of the other program's; nothing until that has played and
    // closed the output.
    std::optional<uint64_t> FrameCount() const;

    // What did not come as it was played, in one line, or empty.
    std::string Loss() const;

    void Advance() override;
    std::string Problem() const override { return problem_; }

private:
    // Between the runner's thread and the card's.
    struct Queue {
        mutable std::mutex Mutex;
        std::deque<simulator::Frame> Frames;
        size_t Length = 0;    // of the cable, in frames
        bool Flows = false;   // else the cable fills, and the input is silent
        bool Ends = false;    // the output is closed: what there is comes out
        uint64_t Taken = 0;   // frames of the signal, silence included
        uint64_t LastAt = 0;  // ... up to the last one that was no silence
        bool IsDry = false;   // all that came has gone on, and the output is open
        unsigned RanDry = 0;  // how often it was, and then more came

        size_t Take(std::span<simulator::Frame> frames);
    };

    simulator::Listener listener_;
    const unsigned rate_;
    const std::shared_ptr<Queue> queue_;
    uint64_t lost_ = 0;
    std::string problem_;
};

}  // namespace kestvox
