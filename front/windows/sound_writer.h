// A WAV file of what a connector carries, written as it comes: 32-bit stereo PCM.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "simulator/channels/frame.h"

namespace front {

class SoundWriter {
public:
    // `rate` in Hz. What cannot be written is known at the end.
    SoundWriter(const std::wstring& path, unsigned rate);
    ~SoundWriter();
    SoundWriter(const SoundWriter&) = delete;
    SoundWriter& operator=(const SoundWriter&) = delete;

    void Write(std::span<const simulator::Frame> frames);

    // False when not everything is in the file. Nothing may be written after it.
    bool Finish();

private:
    void WriteHeader();

    const unsigned rate_;
    std::FILE* file_;
    uint32_t dataSize_ = 0;  // bytes of samples
    bool whole_ = true;
};

}  // namespace front
