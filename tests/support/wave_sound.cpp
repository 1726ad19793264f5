#include "tests/support/wave_sound.h"

#include <cmath>
#include <cstring>

#include "tests/support/wave_player.h"

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

std::vector<BYTE> ClientBytes(const WAVEFORMATEX& format, const std::vector<simulator::Frame>& frames,
                              Justified side) {
    const size_t size = format.nBlockAlign / format.nChannels;
    std::vector<BYTE> data;
    data.reserve(frames.size() * format.nBlockAlign);
    const auto append = [&](int32_t sample) {
        const size_t bits = size == 4 && side == Justified::Right ? 24 : 8 * size;
        const auto value = static_cast<uint32_t>(sample >> (32 - bits)) + (size == 1 ? 128 : 0);
        for (size_t i = 0; i < size; ++i) {
            data.push_back(static_cast<BYTE>(value >> 8 * i));
        }
    };
    for (const simulator::Frame& frame : frames) {
        append(frame.Left);
        if (format.nChannels == 2) {
            append(frame.Right);
        }
    }
    return data;
}

std::vector<simulator::Frame> NoiseFrames(size_t count, unsigned seed) {
    const std::vector<BYTE> bytes = Pattern(count * sizeof(simulator::Frame), seed);
    std::vector<simulator::Frame> frames(count);
    memcpy(frames.data(), bytes.data(), bytes.size());
    return frames;
}
