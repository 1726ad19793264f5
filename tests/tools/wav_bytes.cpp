#include "tests/tools/wav_bytes.h"

#include "tests/support/wave_player.h"

WaveFormat ProgramsFormat(const WavFormat& format) {
    return TaggedFormat(format.Tag, format.Rate, format.Channels, format.Bits, format.BytesPerSample,
                        format.ValidBits);
}

std::string Little(uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return text;
}

std::string Chunk(const std::string& id, const std::string& body) {
    return id + Little(static_cast<uint32_t>(body.size()), 4) + body + std::string(body.size() % 2, '\0');
}

std::string FormatBody(const WavFormat& format) {
    const uint32_t blockAlign = uint32_t{format.BytesPerSample} * format.Channels;
    std::string body = Little(format.Tag, 2) + Little(format.Channels, 2) + Little(format.Rate, 4) +
                       Little(format.Rate * blockAlign, 4) + Little(blockAlign, 2) + Little(format.Bits, 2);
    if (format.Tag == 0xFFFE) {
        const std::string pcm("\x01\x00\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 16);
        body += Little(22, 2) + Little(format.ValidBits, 2) + Little(3, 4) + pcm;
    } else if (format.Tag != 1) {
        body += Little(0, 2);
    }
    return body;
}

std::string Riff(const std::string& chunks) {
    return "RIFF" + Little(static_cast<uint32_t>(chunks.size() + 4), 4) + "WAVE" + chunks;
}

std::string WavFile(const WavFormat& format, const std::string& samples) {
    return Riff(Chunk("fmt ", FormatBody(format)) + Chunk("data", samples));
}

std::string Noise(size_t count) {
    const std::vector<BYTE> bytes = Pattern(count);
    return {bytes.begin(), bytes.end()};
}

std::string NoiseBytes(size_t frames, const WavFormat& format) {
    return Noise(frames * format.BytesPerSample * format.Channels);
}
