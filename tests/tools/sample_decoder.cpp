#include "tests/tools/sample_decoder.h"

#include <cstdint>

namespace {

// ITU-T G.711, A-law: even bits inverted; sign, three bits of segment, four of step. 13-bit magnitudes.
int DecodeALaw(unsigned code) {
    code ^= 0x55;
    const int segment = static_cast<int>(code >> 4 & 7);
    const int step = static_cast<int>(code & 15);
    const int magnitude = segment == 0 ? 2 * step + 1 : (2 * step + 33) << (segment - 1);
    return code & 0x80 ? magnitude : -magnitude;
}

// ITU-T G.711, mu-law: all bits inverted, and magnitudes raised by 33. 14-bit magnitudes.
int DecodeMuLaw(unsigned code) {
    code = ~code & 0xFF;
    const int segment = static_cast<int>(code >> 4 & 7);
    const int step = static_cast<int>(code & 15);
    const int magnitude = ((2 * step + 33) << segment) - 33;
    return code & 0x80 ? -magnitude : magnitude;
}

int32_t FullScale(uint32_t bits) {
    return static_cast<int32_t>(bits);
}

int32_t DecodeSample(const WavFormat& format, uint32_t raw, bool left24) {
    if (format.Tag == 6) {
        return DecodeALaw(raw) * 8 * 65536;
    }
    if (format.Tag == 7) {
        return DecodeMuLaw(raw) * 4 * 65536;
    }
    switch (format.BytesPerSample) {
    case 1:
        return FullScale(raw << 24 ^ 0x80000000);  // the only unsigned one
    case 2:
        return FullScale(raw << 16);
    case 3:
        return FullScale(raw << 8);
    default:
        return FullScale(left24 || format.Tag == 0xFFFE ? raw : raw << 8);
    }
}

}  // namespace

std::vector<simulator::Frame> DecodeSamples(const WavFormat& format, const std::string& bytes, bool left24) {
    std::vector<int32_t> samples;
    for (size_t at = 0; at + format.BytesPerSample <= bytes.size(); at += format.BytesPerSample) {
        uint32_t raw = 0;
        for (size_t i = 0; i < format.BytesPerSample; ++i) {
            raw |= uint32_t{static_cast<uint8_t>(bytes[at + i])} << (8 * i);
        }
        samples.push_back(DecodeSample(format, raw, left24));
    }
    std::vector<simulator::Frame> frames;
    for (size_t i = 0; i + format.Channels <= samples.size(); i += format.Channels) {
        frames.push_back({samples[i], samples[i + format.Channels - 1u]});
    }
    return frames;
}
