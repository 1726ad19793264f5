// The bytes of one input, taken from the front; zeros when they have run out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

class InputBytes {
public:
    InputBytes(const uint8_t* data, size_t size) : next_(data), left_(size) {}

    bool Empty() const { return left_ == 0; }

    template <typename T>
    T Take() {
        T value = {};
        TakeInto(&value, sizeof value);
        return value;
    }
    std::vector<uint8_t> TakeBytes(size_t count) {
        std::vector<uint8_t> bytes(count);
        TakeInto(bytes.data(), count);
        return bytes;
    }
    // One of 0 to `count` - 1.
    unsigned TakeBelow(unsigned count) { return Take<uint8_t>() % count; }

private:
    void TakeInto(void* target, size_t count) {
        const size_t taken = std::min(count, left_);
        if (taken > 0) {
            std::memcpy(target, next_, taken);
        }
        next_ += taken;
        left_ -= taken;
    }

    const uint8_t* next_;
    size_t left_;
};
