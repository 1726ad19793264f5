// A client of one wave output device.
#pragma once

#include <cstring>

#include "tests/support/wave_client.h"

class WavePlayer : public WaveClient<WaveOutCalls> {
public:
    using WaveClient::WaveClient;

    // Writes a new header with a copy of the data at `misalignment` bytes from an 8-byte boundary.
    MMRESULT Write(const std::vector<BYTE>& data, DWORD flags = 0, DWORD loops = 0,
                   unsigned misalignment = 0) {
        WAVEHDR& header = NewHeader(data.size(), misalignment);
        memcpy(header.lpData, data.data(), data.size());
        header.dwFlags |= flags;
        header.dwLoops = loops;
        return HandInNew(header);
    }
};

// `count` bytes of a recognisable pattern that does not repeat within a buffer.
inline std::vector<BYTE> Pattern(size_t count, unsigned seed = 1) {
    std::vector<BYTE> bytes(count);
    uint32_t state = seed * 2654435761u + 1;
    for (BYTE& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<BYTE>(state >> 24);
    }
    return bytes;
}
