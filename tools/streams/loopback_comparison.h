// Compares what came back through a cable with what was played into it, as it comes.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/files/wav_reader.h"
#include "tools/streams/side_work.h"

namespace kestvox {

class LoopbackComparison : public SideWork {
public:
    // `played` is the file from its beginning.
    explicit LoopbackComparison(WavReader played) : played_(std::move(played)) {}

    // Is given what was played and what was recorded of it, as many bytes of each; or nothing recorded, when
    // that did not come.
    using Observer = std::function<void(std::span<const char> played, std::span<const char> recorded)>;
    void SendCompared(Observer observer) { observer_ = std::move(observer); }

    // The next recorded bytes, whole frames. `offset` is the frame of the recording at which the first played
    // one must be, by the cards' clock; nothing while the playback has not begun.
    void Take(std::span<const char> recorded, std::optional<int64_t> offset);

    // There is no more: what has not come is lost.
    void Finish();

    void Advance() override {}  // what comes is compared at once
    // That the file can no longer be read.
    std::string Problem() const override { return problem_; }

    std::optional<int64_t> Offset() const { return offset_; }  // frames; nothing: the playback never began
    uint64_t SamplesLost() const { return samplesLost_; }

private:
    size_t FrameSize() const { return played_.Format().nBlockAlign; }
    std::span<const char> NextPlayed(size_t bytes);
    void Compare(std::span<const char> recorded);
    void Drop(uint64_t frames);

    WavReader played_;
    std::optional<int64_t> offset_;
    uint64_t framesTaken_ = 0;  // of the recording
    uint64_t samplesLost_ = 0;
    std::vector<char> part_;
    std::string problem_;
    Observer observer_;
};

}  // namespace kestvox
