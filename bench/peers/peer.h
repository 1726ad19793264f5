// The same conversions by other libraries. Each library's file adds what it can do to the list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

enum class Work {
    Expand24,    // packed 24-bit samples to 32-bit slots
    Pack24,      // 32-bit slots to packed 24-bit samples
    ExpandALaw,  // A-law codes to 16-bit samples
    Dither16,    // 32-bit slots to 16-bit samples with triangular dither
};

// Stereo samples, not frames.
inline constexpr size_t PeerSamples = 16384;

struct Peer {
    std::string Library;
    Work Does;
    // From PeerSamples samples to as many. May be called again and again.
    std::function<void(uint8_t* to, const uint8_t* from)> Convert;
};
using PeerList = std::vector<Peer>;

void AddAvCodec(PeerList& peers);
void AddSndFile(PeerList& peers);
void AddSox(PeerList& peers);
void AddGStreamer(PeerList& peers);
