// WAV files: a reader and a writer that stream the sample bytes as they lie in the file, and the same for
// the frames that a card hears and is heard to play.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "simulator/simulator.h"

namespace kestvox {

class WavReader {
public:
    // Reads the chunks up to the first sample. CommandError when the file cannot be read, is not a WAV
    // file, or ends before its data does. A writer that could not go back leaves 0 or 0xFFFFFFFF as
    // the length of the data: the data then goes on to the end of the file.
    explicit WavReader(std::string path);

    // The file's own format, with its cbSize bytes behind it. Lives as long as the reader.
    const WAVEFORMATEX& Format() const { return *reinterpret_cast<const WAVEFORMATEX*>(format_.data()); }

    // Whole frames only: bytes of a last incomplete frame are not counted and not read.
    uint64_t ByteCount() const { return byteCount_; }
    uint64_t FrameCount() const { return byteCount_ / Format().nBlockAlign; }

    // Fills `bytes` with the next sample bytes; fewer only at the end of the data. CommandError when the
    // file can no longer be read.
    size_t Read(std::span<char> bytes);

    bool AtEnd() const { return bytesRead_ == byteCount_; }

private:
    struct Chunk {
        char Id[4];
        uint32_t Size;
    };
    [[noreturn]] void Refuse(const std::string& why) const;
    bool ReadExactly(void* bytes, size_t count);
    uint32_t ReadRiffHeader();
    void ReadFormat(uint32_t size);
    void FindData(uint32_t riffSize);
    void SetDataSize(uint32_t size, uint32_t riffSize);

    std::string path_;
    std::ifstream file_;
    uint64_t fileSize_ = 0;
    std::vector<uint8_t> format_;  // at least a WAVEFORMATEX once the format chunk has been read
    uint64_t byteCount_ = 0;
    uint64_t bytesRead_ = 0;
};

class WavWriter {
public:
    // Begins a file of that format, which has its cbSize bytes behind it. `out` can go back, and outlives
    // the object.
    WavWriter(std::ostream& out, const WAVEFORMATEX& format);

    // CommandError when it becomes more than a WAV file can hold.
    void Write(std::span<const char> bytes);

    // Fills in the lengths. Nothing may be written after it.
    void Finish();

private:
    std::ostream& out_;
    uint32_t headerSize_ = 0;  // up to the first sample
    uint64_t dataSize_ = 0;
};

// 32-bit stereo PCM. CommandError when there are more frames than a WAV file can hold.
void WriteWav(std::ostream& out, uint32_t rate, std::span<const simulator::Frame> frames);

// The samples that are left in the file as the card hears them: full scale at 32 bits, a sample of fewer
// bytes at the top of its slot; mono on both sides. CommandError, which names `path`, when the file is not
// PCM of one or two channels.
std::vector<simulator::Frame> ReadFrames(WavReader& reader, const std::string& path);

}  // namespace kestvox
