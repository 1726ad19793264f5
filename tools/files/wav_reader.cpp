#include "tools/files/wav_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tools/command_error.h"
#include "tools/files/host.h"
#include "tools/files/wav_sizes.h"
#include "tools/system/interrupt.h"

namespace kestvox {
namespace {

constexpr int StandardInput = 0;
constexpr uint32_t LeastPretendedSize = 0x7FFF0000;  // that a writer into a pipe gives, not knowing better
constexpr uint32_t LargestFormat = 4096;

bool Is(const char (&id)[4], const char* name) {
    return std::memcmp(id, name, sizeof id) == 0;
}

// Whatever stands in a file, a message stays one line.
std::string Printable(const char (&id)[4]) {
    std::string text(id, sizeof id);
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

}  // namespace

WavReader::WavReader(std::string path) : path_(std::move(path)) {
    std::error_code error;
    if (std::filesystem::is_directory(path_, error)) {
        Refuse("is a directory");
    }
    handle_ = path_ == "-" ? host::CopyHandle(StandardInput) : host::OpenForReading(path_);
    if (handle_ < 0) {
        Refuse(std::strerror(errno));
    }
    fileSize_ = host::LengthOf(handle_);
    try {
        FindData(ReadRiffHeader());
    } catch (...) {
        host::Close(handle_);
        throw;
    }
}

WavReader::WavReader(WavReader&& other) noexcept
    : path_(std::move(other.path_)),
      handle_(std::exchange(other.handle_, -1)),
      at_(other.at_),
      fileSize_(other.fileSize_),
      format_(std::move(other.format_)),
      byteCount_(other.byteCount_),
      bytesRead_(other.bytesRead_) {}

WavReader::~WavReader() {
    if (handle_ >= 0) {
        host::Close(handle_);
    }
}

void WavReader::Refuse(const std::string& why) const {
    throw CommandError(path_ + ": " + why);
}

std::optional<uint64_t> WavReader::FrameCount() const {
    return byteCount_ ? std::optional(*byteCount_ / Format().nBlockAlign) : std::nullopt;
}

// Fewer than asked for only at the end, or when the user interrupts.
size_t WavReader::ReadBytes(std::span<char> bytes) {
    size_t read = 0;
    while (read < bytes.size()) {
        const int64_t count = host::ReadSome(handle_, bytes.subspan(read));
        if (count < 0 && !IsInterrupted()) {
            Refuse(std::strerror(errno));
        }
        if (count <= 0) {
            break;
        }
        read += static_cast<size_t>(count);
    }
    at_ += read;
    return read;
}

bool WavReader::ReadExactly(void* bytes, size_t count) {
    return ReadBytes({static_cast<char*>(bytes), count}) == count;
}

void WavReader::Skip(uint64_t count) {
    if (fileSize_) {
        host::SkipBytes(handle_, count);
        at_ += count;
        return;
    }
    std::array<char, 4096> dropped;
    while (count > 0) {
        const auto part = static_cast<size_t>(std::min<uint64_t>(count, dropped.size()));
        if (!ReadExactly(dropped.data(), part)) {
            return;
        }
        count -= part;
    }
}

// Answers the size that the RIFF header gives for all that follows it.
uint32_t WavReader::ReadRiffHeader() {
    Chunk riff;
    char kind[4];
    if (!ReadExactly(&riff, sizeof riff) || !Is(riff.Id, "RIFF") || !ReadExactly(kind, sizeof kind) ||
        !Is(kind, "WAVE")) {
        Refuse("not a WAV file (no RIFF WAVE header)");
    }
    return riff.Size;
}

void WavReader::FindData(uint32_t riffSize) {
    for (;;) {
        Chunk chunk;
        if (!ReadExactly(&chunk, sizeof chunk)) {
            Refuse(format_.empty() ? "no format chunk" : "no data chunk");
        }
        if (Is(chunk.Id, "data")) {
            SetDataSize(chunk.Size, riffSize);
            return;
        }
        const uint64_t start = at_;
        if (fileSize_ && start + chunk.Size > *fileSize_) {
            Refuse("truncated inside its chunk '" + Printable(chunk.Id) + "'");
        }
        if (Is(chunk.Id, "fmt ") && format_.empty()) {
            ReadFormat(chunk.Size);
        }
        // Chunks begin on even offsets; the padding is not part of the size.
        Skip(start + chunk.Size + chunk.Size % 2 - at_);
    }
}

void WavReader::ReadFormat(uint32_t size) {
    if (size < SmallestFormat || size > LargestFormat) {
        Refuse("its format chunk has a length of " + std::to_string(size) + " bytes");
    }
    format_.assign(std::max<size_t>(size, sizeof(WAVEFORMATEX)), 0);
    if (!ReadExactly(format_.data(), size)) {
        Refuse("truncated inside its format chunk");
    }
    if (sizeof(WAVEFORMATEX) + Format().cbSize > format_.size()) {
        Refuse("its format chunk is shorter than it says");
    }
    if (Format().nBlockAlign == 0 || Format().nSamplesPerSec == 0) {
        Refuse("its format has no block alignment or no sample rate");
    }
}

void WavReader::SetDataSize(uint32_t size, uint32_t riffSize) {
    if (format_.empty()) {
        Refuse("its data comes before its format");
    }
    // An empty data chunk is meant to be empty when the RIFF size counts in what follows it.
    const bool neverPatched = size == 0 && 8 + static_cast<uint64_t>(riffSize) <= at_;
    bool unknown = size == UnknownSize || (size == 0 && (neverPatched || riffSize == UnknownSize));
    if (fileSize_) {
        const uint64_t toTheEnd = *fileSize_ - at_;
        if (!unknown && size > toTheEnd) {
            Refuse("truncated: " + std::to_string(toTheEnd) + " of " + std::to_string(size) +
                   " bytes of sample data");
        }
        byteCount_ = unknown ? toTheEnd : size;
    } else if (unknown = unknown || size >= LeastPretendedSize; !unknown) {
        byteCount_ = size;
    }
    if (byteCount_) {
        byteCount_ = WholeFrames(*byteCount_);
        if (*byteCount_ == 0) {
            Refuse("holds no samples");
        }
    }
}

size_t WavReader::Read(std::span<char> bytes) {
    const uint64_t left = byteCount_ ? *byteCount_ - bytesRead_ : WholeFrames(bytes.size());
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(bytes.size(), left));
    size_t count = ReadBytes(bytes.first(wanted));
    if (!byteCount_) {
        count = static_cast<size_t>(WholeFrames(count));
    }
    bytesRead_ += count;
    if (count < wanted && !IsInterrupted()) {
        if (byteCount_) {
            Refuse("truncated: " + std::to_string(bytesRead_) + " of " + std::to_string(*byteCount_) +
                   " bytes of sample data");
        }
        byteCount_ = bytesRead_;
    }
    return count;
}

}  // namespace kestvox
