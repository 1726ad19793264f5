// What one output device is heard to play, on its way into a file: 32-bit stereo WAV.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/files/wav_writer.h"
#include "tools/machine/scene.h"
#include "tools/streams/side_work.h"

namespace kestvox {

// The cards hand over frames on a thread of their own, under a lock of theirs; they wait here, in memory,
// until the runner's thread writes them.
class CaptureFile final : public SideWork {
public:
    // CommandError when the file cannot be made.
    explicit CaptureFile(const std::string& path) : file_(path) {}

    // From now on, until the scene's end; this outlives it. CommandError when the cards are not simulated.
    void Begin(Scene& scene, unsigned device, uint32_t rate);

    void Advance() override;
    std::string Problem() const override;

    // The device plays no more.
    void Finish();

private:
    OutputFile file_;
    std::optional<WavWriter> writer_;
    std::mutex mutex_;
    std::vector<simulator::Frame> waiting_;
    std::vector<simulator::Frame> taken_;
};

}  // namespace kestvox
