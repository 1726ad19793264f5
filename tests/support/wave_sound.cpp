#include "tests/support/wave_sound.h"

#include <cstring>

#include "report/samples.h"
#include "tests/support/wave_player.h"

std::vector<simulator::Frame> Sound(const WAVEFORMATEX& format, const std::vector<BYTE>& data,
                                    Justified side) {
    std::vector<simulator::Frame> frames;
    kestvox::AppendFrames(format, {reinterpret_cast<const char*>(data.data()), data.size()}, frames);
    if (side == Justified::Right && format.nBlockAlign == 4 * format.nChannels) {
        for (simulator::Frame& frame : frames) {
            frame.Left = static_cast<int32_t>(static_cast<uint32_t>(frame.Left) << 8);
            frame.Right = static_cast<int32_t>(static_cast<uint32_t>(frame.Right) << 8);
        }
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
