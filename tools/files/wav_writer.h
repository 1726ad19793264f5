// Writes a WAV file, or into a pipe, as the samples come.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstdint>
#include <span>
#include <string>

#include "tools/files/output_file.h"

namespace kestvox {

class WavWriter {
public:
    // Begins a file of that format, which has its cbSize bytes behind it. `out` outlives the object. A pipe
    // is told that the length is not known.
    WavWriter(OutputFile& out, const WAVEFORMATEX& format);

    // Takes no more when something has gone wrong.
    void Write(std::span<const char> bytes);

    // Fills in the lengths, and moves a regular file to its place: also when not all could be written, with
    // the whole frames that were. Nothing may be written after it.
    void Finish();

    // What went wrong first: one line, or empty.
    const std::string& Problem() const { return problem_.empty() ? out_.Problem() : problem_; }

private:
    void WriteSize(uint32_t size);

    OutputFile& out_;
    std::string problem_;
    uint32_t frameSize_;
    uint32_t headerSize_;  // up to the first sample
    uint64_t dataSize_ = 0;
};

}  // namespace kestvox
