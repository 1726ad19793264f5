#include <cstring>

#include "convert/routines.h"

namespace kestvox {

namespace {

constexpr size_t GroupSize = 4;  // samples: 16 bytes in, 12 bytes out

void StoreWord(uint8_t* bytes, uint32_t word) {
    memcpy(bytes, &word, sizeof word);
}

// The top three bytes of four slots as three words.
void PackGroup(uint8_t* destination, const uint32_t* source) {
    StoreWord(destination, source[0] >> 8 | (source[1] & 0xFF00) << 16);
    StoreWord(destination + 4, source[1] >> 16 | (source[2] & 0xFFFF00) << 8);
    StoreWord(destination + 8, source[2] >> 24 | (source[3] & 0xFFFFFF00));
}

}  // namespace

void portable::PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    const uint32_t* const end = source + count / GroupSize * GroupSize;
    for (; source != end; source += GroupSize, destination += GroupSize * 3) {
        PackGroup(destination, source);
    }
    for (size_t left = count % GroupSize; left != 0; --left, ++source, destination += 3) {
        destination[0] = static_cast<uint8_t>(*source >> 8);
        destination[1] = static_cast<uint8_t>(*source >> 16);
        destination[2] = static_cast<uint8_t>(*source >> 24);
    }
}

}  // namespace kestvox
