#include "report/samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "report/wave_format.h"

namespace kestvox {
namespace {

using Decoder = int32_t (*)(const char* bytes);

// Of fewer bytes than four: at the top. 8 bits are unsigned.
template <size_t Size>
int32_t WholeSample(const char* bytes) {
    uint32_t slot = 0;
    std::memcpy(reinterpret_cast<char*>(&slot) + sizeof slot - Size, bytes, Size);
    return static_cast<int32_t>(Size == 1 ? slot ^ 0x80000000 : slot);
}

template <typename Float>
int32_t FloatSample(const char* bytes) {
    Float value;
    std::memcpy(&value, bytes, sizeof value);
    const double scaled = std::isnan(value) ? 0 : std::nearbyint(static_cast<double>(value) * FullScale);
    return static_cast<int32_t>(std::clamp(scaled, -FullScale, FullScale - 1));
}

// Both laws code a sign, a segment and a step within it, for 16 bits.
int32_t AtTop(int32_t sample) {
    return sample * 65536;
}

int32_t MuLawSample(const char* bytes) {
    constexpr int32_t Bias = 0x84;
    const auto code = static_cast<uint8_t>(~static_cast<uint8_t>(*bytes));
    const int32_t size = (((code & 0x0F) << 3) + Bias) << (code >> 4 & 7);
    return AtTop((code & 0x80) != 0 ? Bias - size : size - Bias);
}

int32_t ALawSample(const char* bytes) {
    const auto code = static_cast<uint8_t>(static_cast<uint8_t>(*bytes) ^ 0x55);
    const int32_t segment = code >> 4 & 7;
    const int32_t step = ((code & 0x0F) << 4) + 8;
    const int32_t size = segment == 0 ? step : (step + 0x100) << (segment - 1);
    return AtTop((code & 0x80) != 0 ? size : -size);
}

size_t SampleSize(const WAVEFORMATEX& format) {
    return format.nChannels ? size_t{format.nBlockAlign} / format.nChannels : 0;
}

// Null: unknown.
Decoder DecoderOf(const WAVEFORMATEX& format) {
    const size_t size = SampleSize(format);
    if (IsFloat(format)) {
        return size == sizeof(float)    ? FloatSample<float>
               : size == sizeof(double) ? FloatSample<double>
                                        : nullptr;
    }
    if (size == 1 && format.wFormatTag == WAVE_FORMAT_MULAW) {
        return MuLawSample;
    }
    if (size == 1 && format.wFormatTag == WAVE_FORMAT_ALAW) {
        return ALawSample;
    }
    constexpr Decoder Whole[] = {nullptr, WholeSample<1>, WholeSample<2>, WholeSample<3>, WholeSample<4>};
    return IsWhole(format) && size < std::size(Whole) ? Whole[size] : nullptr;
}

}  // namespace

bool HasKnownSamples(const WAVEFORMATEX& format) {
    return format.nChannels >= 1 && format.nChannels <= 2 && DecoderOf(format);
}

void AppendFrames(const WAVEFORMATEX& format, std::span<const char> bytes,
                  std::vector<simulator::Frame>& frames) {
    const Decoder decode = DecoderOf(format);
    const size_t frameSize = format.nBlockAlign;
    const size_t right = frameSize - SampleSize(format);
    frames.reserve(frames.size() + bytes.size() / frameSize);
    for (size_t at = 0; at + frameSize <= bytes.size(); at += frameSize) {
        frames.push_back({decode(&bytes[at]), decode(&bytes[at + right])});
    }
}

}  // namespace kestvox
