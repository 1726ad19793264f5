#include "tests/tools/wav_bytes.h"

#include "tests/support/wave_player.h"

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

std::string FormatBody(const WaveFormat& format) {
    const WAVEFORMATEX& basic = format;
    std::string body = Little(basic.wFormatTag, 2) + Little(basic.nChannels, 2) +
                       Little(basic.nSamplesPerSec, 4) + Little(basic.nSamplesPerSec * basic.nBlockAlign, 4) +
                       Little(basic.nBlockAlign, 2) + Little(basic.wBitsPerSample, 2);
    if (basic.wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
        const std::string pcm("\x01\x00\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 16);
        body += Little(22, 2) + Little(format.Extensible.Samples.wValidBitsPerSample, 2) + Little(3, 4) + pcm;
    } else if (basic.wFormatTag != WAVE_FORMAT_PCM) {
        body += Little(0, 2);
    }
    return body;
}

std::string Riff(const std::string& chunks) {
    return "RIFF" + Little(static_cast<uint32_t>(chunks.size() + 4), 4) + "WAVE" + chunks;
}

std::string WavFile(const WaveFormat& format, const std::string& samples) {
    return Riff(Chunk("fmt ", FormatBody(format)) + Chunk("data", samples));
}

std::string Noise(size_t count) {
    const std::vector<BYTE> bytes = Pattern(count);
    return {bytes.begin(), bytes.end()};
}

std::string NoiseFile(size_t frames, const WaveFormat& format) {
    return WavFile(format, Noise(frames * format.Get()->nBlockAlign));
}
