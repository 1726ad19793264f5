// A recording on its way into its file, in the format in which it was recorded.
#pragma once

#include <span>
#include <string>

#include "tools/files/wav_writer.h"
#include "tools/streams/side_work.h"

namespace kestvox {

class RecordingFile final : public SideWork {
public:
    // CommandError when the file cannot be made.
    RecordingFile(const std::string& path, const WAVEFORMATEX& format)
        : file_(path), writer_(file_, format) {}

    void Write(std::span<const char> bytes) { writer_.Write(bytes); }
    void Finish() { writer_.Finish(); }

    void Advance() override {}
    std::string Problem() const override { return writer_.Problem(); }

private:
    OutputFile file_;
    WavWriter writer_;
};

}  // namespace kestvox
