// A WAV file, or a pipe that brings one, on its way to an input connector.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/simulator.h"
#include "tools/files/wav_reader.h"
#include "tools/streams/side_work.h"

namespace kestvox {

// The card takes frames on a thread of its own, under a lock of its own. So that it need not wait for the
// file there, the runner's thread reads ahead; when that was not enough, the card waits.
class InputFeed final : public SideWork {
public:
    // CommandError when the file cannot be read, or is neither PCM nor floating point of one or two channels.
    explicit InputFeed(const std::string& path);

    const WAVEFORMATEX& Format() const { return reader_.Format(); }
    // Samples are converted to the 32 bits of the connector; this says so when that is more than putting
    // whole samples at the top of them. Empty: it is not.
    std::string ConversionNote() const;

    // Frames in all; nothing while the end of a pipe has not been seen.
    std::optional<uint64_t> FrameCount() const;

    // At full scale; mono on both sides. This outlives what it is plugged into.
    simulator::InputSignal Signal();

    // How many frames Advance reads ahead.
    void SetReadAhead(size_t frames) { readAhead_ = frames; }
    void Advance() override;
    std::string Problem() const override;

private:
    void ReadSome();
    size_t Take(std::span<simulator::Frame> frames);

    mutable std::mutex mutex_;
    WavReader reader_;
    size_t readAhead_ = 0;
    std::vector<char> bytes_;
    std::deque<simulator::Frame> ahead_;
    std::string problem_;
};

}  // namespace kestvox
