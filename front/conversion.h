// Turning wave data of one format into that of another.
#pragma once

#include <windows.h>

#include <span>
#include <vector>

namespace front {

class Conversion {
public:
    virtual ~Conversion() = default;

    // How many bytes of the one format make at most `size` bytes of the other; 0: none do.
    virtual DWORD Needed(DWORD size) const = 0;

    // Converts as many whole blocks as there are and appends the result to `out`. Answers the bytes that it
    // has used. `begins`: what came before has nothing to do with it.
    virtual size_t Convert(std::span<const BYTE> in, bool begins, std::vector<BYTE>& out) = 0;
};

}  // namespace front
