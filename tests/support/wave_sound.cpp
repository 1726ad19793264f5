#include "tests/support/wave_sound.h"

#include <cmath>

int ALawSample(BYTE code) {
    const int sent = code ^ 0x55;  // even bits travel inverted
    const int segment = sent >> 4 & 7;
    const int half = 2 * (sent & 15) + 1;  // in half steps: the middle of the interval
    const int value = segment == 0 ? half : static_cast<int>(std::ldexp(half + 32, segment - 1));
    return (sent & 0x80) != 0 ? 8 * value : -8 * value;
}

int MuLawSample(BYTE code) {
    const int sent = 255 - code;  // all bits travel inverted
    const int value = static_cast<int>(std::ldexp(2 * (sent & 15) + 33, sent >> 4 & 7)) - 33;
    return (sent & 0x80) != 0 ? -4 * value : 4 * value;
}

namespace {

uint32_t LittleEndian(const BYTE* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) {
        value |= static_cast<uint32_t>(bytes[i]) << 8 * i;
    }
    return value;
}

uint32_t FullScale(const WAVEFORMATEX& format, const BYTE* bytes, size_t size, Justified side) {
    if (format.wFormatTag == WAVE_FORMAT_ALAW) {
        return static_cast<uint32_t>(ALawSample(*bytes)) << 16;
    }
    if (format.wFormatTag == WAVE_FORMAT_MULAW) {
        return static_cast<uint32_t>(MuLawSample(*bytes)) << 16;
    }
    const uint32_t value = LittleEndian(bytes, size);
    switch (size) {
    case 1:
        return (value - 128) << 24;  // silence is 128
    case 4:
        return side == Justified::Left ? value : value << 8;
    default:
        return value << (32 - 8 * size);
    }
}

}  // namespace

std::vector<simulator::Frame> Sound(const WAVEFORMATEX& format, const std::vector<BYTE>& data,
                                    Justified side) {
    const size_t size = format.nBlockAlign / format.nChannels;
    std::vector<simulator::Frame> frames(data.size() / format.nBlockAlign);
    const BYTE* bytes = data.data();
    for (simulator::Frame& frame : frames) {
        frame.Left = static_cast<int32_t>(FullScale(format, bytes, size, side));
        frame.Right = frame.Left;
        if (format.nChannels == 2) {
            frame.Right = static_cast<int32_t>(FullScale(format, bytes + size, size, side));
        }
        bytes += format.nBlockAlign;
    }
    return frames;
}
