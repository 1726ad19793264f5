// A client of one wave input device, which keeps what was recorded.
#pragma once

#include "tests/support/wave_client.h"

class WaveRecorder : public WaveClient<WaveInCalls> {
public:
    using WaveClient::WaveClient;

    // Adds a new header with an untouched buffer of `size` bytes at `misalignment` bytes from an 8-byte
    // boundary.
    MMRESULT Add(size_t size, unsigned misalignment = 0) { return HandInNew(NewHeader(size, misalignment)); }

    // What came back, one buffer after the other: dwBytesRecorded of each, and the bytes themselves as
    // they were when it came back.
    std::vector<DWORD> Counts() { return Locked(counts_); }
    std::vector<BYTE> Recorded() { return Locked(recorded_); }
};
