#include "simulator/channels/samples.h"

#include <cstring>

namespace simulator {
namespace {

// One layout's slot in memory, and what it means at 32 bits.
struct Unsigned8 {
    using Slot = uint8_t;
    static int32_t Value(Slot slot) { return static_cast<int32_t>((slot ^ 0x80u) << 24); }
    static Slot Of(int32_t value) { return static_cast<Slot>((static_cast<uint32_t>(value) >> 24) ^ 0x80u); }
};
struct Signed16 {
    using Slot = uint16_t;
    static int32_t Value(Slot slot) { return static_cast<int32_t>(static_cast<uint32_t>(slot) << 16); }
    static Slot Of(int32_t value) { return static_cast<Slot>(static_cast<uint32_t>(value) >> 16); }
};
struct Right24 {
    using Slot = uint32_t;
    static int32_t Value(Slot slot) { return static_cast<int32_t>(slot << 8); }
    static Slot Of(int32_t value) { return static_cast<Slot>(value >> 8); }
};
struct Left32 {
    using Slot = uint32_t;
    static int32_t Value(Slot slot) { return static_cast<int32_t>(slot); }
    static Slot Of(int32_t value) { return static_cast<Slot>(value); }
};

template <typename Layout>
typename Layout::Slot Load(const uint8_t* bytes) {
    typename Layout::Slot slot;
    std::memcpy(&slot, bytes, sizeof slot);
    return slot;
}

template <typename Layout>
void Decode(bool mono, const uint8_t* bytes, size_t frames, Frame* out) {
    constexpr size_t Size = sizeof(typename Layout::Slot);
    if (mono) {
        for (size_t i = 0; i < frames; ++i) {
            const int32_t value = Layout::Value(Load<Layout>(bytes + i * Size));
            out[i] = {value, value};
        }
        return;
    }
    for (size_t i = 0; i < frames; ++i) {
        out[i] = {Layout::Value(Load<Layout>(bytes + 2 * i * Size)),
                  Layout::Value(Load<Layout>(bytes + (2 * i + 1) * Size))};
    }
}

template <typename Layout>
void Encode(bool mono, const Frame* frames, size_t count, uint8_t* bytes) {
    const size_t sides = mono ? 1 : 2;
    for (size_t i = 0; i < count; ++i) {
        const typename Layout::Slot slots[2] = {Layout::Of(frames[i].Left), Layout::Of(frames[i].Right)};
        std::memcpy(bytes, slots, sides * sizeof slots[0]);
        bytes += sides * sizeof slots[0];
    }
}

}  // namespace

void DecodeFrames(SampleLayout layout, const uint8_t* bytes, size_t frames, Frame* out) {
    constexpr decltype(&Decode<Left32>) Decoders[] = {Decode<Unsigned8>, Decode<Signed16>, Decode<Right24>,
                                                      Decode<Left32>};
    Decoders[layout.Format](layout.Mono, bytes, frames, out);
}

void EncodeFrames(SampleLayout layout, const Frame* frames, size_t count, uint8_t* bytes) {
    constexpr decltype(&Encode<Left32>) Encoders[] = {Encode<Unsigned8>, Encode<Signed16>, Encode<Right24>,
                                                      Encode<Left32>};
    Encoders[layout.Format](layout.Mono, frames, count, bytes);
}

}  // namespace simulator
