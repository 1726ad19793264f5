// Samples of three bytes, to and from the card's 32-bit slots. A group is four samples: twelve bytes, which
// are read and written as three words.
#include <cstring>

#include "convert/routines.h"

namespace kestvox {

namespace {

constexpr size_t GroupSamples = 4;
constexpr size_t SampleBytes = 3;

uint32_t LoadWord(const uint8_t* bytes) {
    uint32_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

void StoreWord(uint8_t* bytes, uint32_t word) {
    memcpy(bytes, &word, sizeof word);
}

// Each slot gets its three bytes at the top.
void ExpandGroup(uint32_t* slots, const uint8_t* packed) {
    const uint32_t first = LoadWord(packed);
    const uint32_t second = LoadWord(packed + 4);
    const uint32_t third = LoadWord(packed + 8);
    slots[0] = first << 8;
    slots[1] = (first >> 16 & 0xFF00) | second << 16;
    slots[2] = (second >> 8 & 0xFFFF00) | third << 24;
    slots[3] = third & 0xFFFFFF00;
}

// The top three bytes of each slot.
void PackGroup(uint8_t* packed, const uint32_t* slots) {
    StoreWord(packed, slots[0] >> 8 | (slots[1] & 0xFF00) << 16);
    StoreWord(packed + 4, slots[1] >> 16 | (slots[2] & 0xFFFF00) << 8);
    StoreWord(packed + 8, slots[2] >> 24 | (slots[3] & 0xFFFFFF00));
}

}  // namespace

void portable::ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    const uint8_t* const end = source + count / GroupSamples * GroupSamples * SampleBytes;
    for (; source != end; source += GroupSamples * SampleBytes, destination += GroupSamples) {
        ExpandGroup(destination, source);
    }
    for (size_t left = count % GroupSamples; left != 0; --left, source += SampleBytes, ++destination) {
        *destination = static_cast<uint32_t>(source[0]) << 8 | static_cast<uint32_t>(source[1]) << 16 |
                       static_cast<uint32_t>(source[2]) << 24;
    }
}

void portable::PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    const uint32_t* const end = source + count / GroupSamples * GroupSamples;
    for (; source != end; source += GroupSamples, destination += GroupSamples * SampleBytes) {
        PackGroup(destination, source);
    }
    for (size_t left = count % GroupSamples; left != 0; --left, ++source, destination += SampleBytes) {
        destination[0] = static_cast<uint8_t>(*source >> 8);
        destination[1] = static_cast<uint8_t>(*source >> 16);
        destination[2] = static_cast<uint8_t>(*source >> 24);
    }
}

}  // namespace kestvox
