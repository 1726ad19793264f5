// Frames as they lie in memory: the four layouts that the port control register chooses from.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/card/register_map.h"
#include "simulator/channels/frame.h"

namespace simulator {

struct SampleLayout {
    unsigned Format;  // 0: unsigned 8 bits, 1: 16 bits, 2: the low 24 of 32 bits, 3: 32 bits
    bool Mono;        // one sample a frame, the same on both sides

    static SampleLayout FromPortControl(uint8_t value) {
        return {static_cast<unsigned>((value & SampleFormatMask) >> SampleFormatShift),
                (value & PortMono) != 0};
    }
    size_t FrameBytes() const {
        const size_t sample = Format == 0 ? 1 : Format == 1 ? 2 : 4;
        return Mono ? sample : 2 * sample;
    }
};

inline constexpr size_t MostFrameBytes = 8;

// `bytes` need not be aligned.
void DecodeFrames(SampleLayout layout, const uint8_t* bytes, size_t frames, Frame* out);

// As the card records: a mono frame holds the left side; bits that do not fit are cut off.
void EncodeFrames(SampleLayout layout, const Frame* frames, size_t count, uint8_t* bytes);

}  // namespace simulator
