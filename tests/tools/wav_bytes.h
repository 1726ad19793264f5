// WAV files put together byte by byte, right or wrong.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/wave_formats.h"

struct WavFormat {
    uint16_t Tag = 1;
    uint16_t Channels = 2;
    uint32_t Rate = 44100;
    uint16_t Bits = 16;
    uint16_t BytesPerSample = 2;
    uint16_t ValidBits = 0;  // of the extensible tag
};

// As programs have it.
WaveFormat ProgramsFormat(const WavFormat& format);

std::string Little(uint32_t value, int bytes);

// A chunk with its padding byte.
std::string Chunk(const std::string& id, const std::string& body);

// The body of the format chunk: 16 bytes for PCM, 18 for other tags, 40 for the extensible one.
std::string FormatBody(const WavFormat& format);

// "RIFF", the size of what follows, "WAVE", the chunks.
std::string Riff(const std::string& chunks);

std::string WavFile(const WavFormat& format, const std::string& samples);

// Bytes that look like noise, the same on every run.
std::string Noise(size_t count);
std::string NoiseBytes(size_t frames, const WavFormat& format = {});
