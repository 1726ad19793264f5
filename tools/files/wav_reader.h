// Reads a WAV file, or a pipe that brings one, as it comes: the sample bytes as they lie in the file.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kestvox {

class WavReader {
public:
    // Reads the chunks up to the first sample; "-" is the standard input. CommandError when the file cannot
    // be read, is not a WAV file, or ends before its data does. A writer that could not go back leaves a
    // length of 0 or of all there can be: the data then goes on to the end of the file.
    explicit WavReader(std::string path);
    ~WavReader();
    WavReader(WavReader&& other) noexcept;
    WavReader& operator=(WavReader&&) = delete;

    const std::string& Path() const { return path_; }

    // It can be read from beginning to end, once.
    bool IsPipe() const { return !fileSize_ || path_ == "-"; }

    // The file's own format, with its cbSize bytes behind it. Lives as long as the reader.
    const WAVEFORMATEX& Format() const { return *reinterpret_cast<const WAVEFORMATEX*>(format_.data()); }

    // Whole frames only: bytes of a last incomplete frame are not counted and not read. Nothing while the end
    // of a pipe has not been seen.
    std::optional<uint64_t> ByteCount() const { return byteCount_; }
    std::optional<uint64_t> FrameCount() const;

    // Fills `bytes`, room for whole frames, with the next sample bytes; fewer only at the end of the data, or
    // when the user interrupts. CommandError when the file can no longer be read.
    size_t Read(std::span<char> bytes);

    bool AtEnd() const { return bytesRead_ == byteCount_; }

private:
    struct Chunk {
        char Id[4];
        uint32_t Size;
    };
    uint64_t WholeFrames(uint64_t bytes) const { return bytes - bytes % Format().nBlockAlign; }
    [[noreturn]] void Refuse(const std::string& why) const;
    size_t ReadBytes(std::span<char> bytes);
    bool ReadExactly(void* bytes, size_t count);
    void Skip(uint64_t count);
    uint32_t ReadRiffHeader();
    void ReadFormat(uint32_t size);
    void FindData(uint32_t riffSize);
    void SetDataSize(uint32_t size, uint32_t riffSize);

    std::string path_;
    int handle_ = -1;
    uint64_t at_ = 0;                    // bytes read or skipped
    std::optional<uint64_t> fileSize_;   // nothing: a pipe
    std::vector<uint8_t> format_;        // at least a WAVEFORMATEX once the format chunk has been read
    std::optional<uint64_t> byteCount_;  // of the samples; nothing: as many as come
    uint64_t bytesRead_ = 0;
};

}  // namespace kestvox
