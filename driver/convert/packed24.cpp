#include <cstring>

#include "convert/routines.h"

namespace kestvox {

namespace {

constexpr size_t GroupSize = 4;  // samples: 12 bytes in, 16 bytes out

uint32_t LoadWord(const uint8_t* bytes) {
    uint32_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
}

// Twelve bytes as three words; each slot gets its three bytes at the top.
void ExpandGroup(uint32_t* destination, const uint8_t* source) {
    const uint32_t first = LoadWord(source);
    const uint32_t second = LoadWord(source + 4);
    const uint32_t third = LoadWord(source + 8);
    destination[0] = first << 8;
    destination[1] = (first >> 16 & 0xFF00) | second << 16;
    destination[2] = (second >> 8 & 0xFFFF00) | third << 24;
    destination[3] = third & 0xFFFFFF00;
}

}  // namespace

void portable::ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    const uint8_t* const end = source + count / GroupSize * GroupSize * 3;
    for (; source != end; source += GroupSize * 3, destination += GroupSize) {
        ExpandGroup(destination, source);
    }
    for (size_t left = count % GroupSize; left != 0; --left, source += 3, ++destination) {
        *destination = static_cast<uint32_t>(source[0]) << 8 | static_cast<uint32_t>(source[1]) << 16 |
                       static_cast<uint32_t>(source[2]) << 24;
    }
}

}  // namespace kestvox
