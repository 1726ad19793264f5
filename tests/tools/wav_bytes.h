// WAV files put together byte by byte, right or wrong.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/wave_formats.h"

inline const WaveFormat Usual = PcmFormat(44100, 2, 16);

std::string Little(uint32_t value, int bytes);

// A chunk with its padding byte.
std::string Chunk(const std::string& id, const std::string& body);

// The body of the format chunk: 16 bytes for PCM, 18 for other tags, 40 for the extensible one.
std::string FormatBody(const WaveFormat& format = Usual);

// "RIFF", the size of what follows, "WAVE", the chunks.
std::string Riff(const std::string& chunks);

std::string WavFile(const WaveFormat& format, const std::string& samples);

// Bytes that look like noise, the same on every run, and a file of so many frames of them.
std::string Noise(size_t count);
std::string NoiseFile(size_t frames, const WaveFormat& format = Usual);
