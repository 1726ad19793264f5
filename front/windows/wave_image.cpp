#include "front/windows/wave_image.h"

#include <algorithm>
#include <cstring>

namespace front {

namespace {

struct Chunk {
    char Id[4];
    DWORD Size;
};

constexpr size_t RiffHeaderSize = sizeof(Chunk) + 4;  // up to the kind of the file

bool Is(const BYTE* at, const char* name) {
    return std::memcmp(at, name, 4) == 0;
}

Chunk ChunkAt(const BYTE* at) {
    Chunk chunk;
    std::memcpy(&chunk, at, sizeof chunk);
    return chunk;
}

std::vector<BYTE> ReadFormat(const BYTE* at, size_t size) {
    if (size < sizeof(PCMWAVEFORMAT)) {
        return {};
    }
    std::vector<BYTE> format(std::max(size, sizeof(WAVEFORMATEX)));
    std::copy_n(at, size, format.begin());
    WAVEFORMATEX header;
    std::memcpy(&header, format.data(), sizeof header);
    return sizeof header + header.cbSize <= format.size() ? format : std::vector<BYTE>();
}

}  // namespace

std::optional<WaveSound> ParseWaveImage(const BYTE* image, size_t size) {
    if (size < RiffHeaderSize || !Is(image, "RIFF") || !Is(image + sizeof(Chunk), "WAVE")) {
        return std::nullopt;
    }
    const size_t claimed = ChunkAt(image).Size;
    const size_t end = sizeof(Chunk) + std::min(size - sizeof(Chunk), claimed);
    WaveSound sound;
    for (size_t at = RiffHeaderSize; at + sizeof(Chunk) <= end;) {
        const Chunk chunk = ChunkAt(image + at);
        const BYTE* const content = image + at + sizeof chunk;
        const size_t room = end - at - sizeof chunk;
        const size_t length = chunk.Size;
        if (length > room) {
            return std::nullopt;
        }
        if (Is(image + at, "fmt ")) {
            sound.Format = ReadFormat(content, length);
        } else if (Is(image + at, "data")) {
            sound.Samples.assign(content, content + length);
            break;
        }
        // Chunks begin on even offsets; the padding is not part of the size.
        at += sizeof chunk + std::min(room, length + length % 2);
    }
    return sound.Format.empty() || sound.Samples.empty() ? std::nullopt : std::optional(std::move(sound));
}

}  // namespace front
