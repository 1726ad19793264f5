#include "tools/files/wav_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <utility>

#include "tools/command_error.h"
#include "tools/files/wave_format.h"

namespace kestvox {
namespace {

constexpr uint32_t UnknownSize = 0xFFFFFFFF;
constexpr uint32_t SmallestFormat = 16;  // a format chunk without cbSize
constexpr uint32_t LargestFormat = 4096;

bool Is(const char (&id)[4], const char* name) {
    return std::memcmp(id, name, sizeof id) == 0;
}

void WriteSize(std::ostream& out, uint32_t size) {
    out.write(reinterpret_cast<const char*>(&size), sizeof size);
}

// Whatever stands in a file, a message stays one line.
std::string Printable(const char (&id)[4]) {
    std::string text(id, sizeof id);
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

}  // namespace

WavReader::WavReader(std::string path) : path_(std::move(path)) {
    std::error_code error;
    if (std::filesystem::is_directory(path_, error)) {
        Refuse("is a directory");
    }
    file_.open(path_, std::ios::binary);
    if (!file_) {
        Refuse(std::strerror(errno));
    }
    file_.seekg(0, std::ios::end);
    const auto end = static_cast<std::streamoff>(file_.tellg());
    file_.seekg(0);
    if (!file_ || end < 0) {
        Refuse("cannot be read from any place");
    }
    fileSize_ = static_cast<uint64_t>(end);
    FindData(ReadRiffHeader());
}

void WavReader::Refuse(const std::string& why) const {
    throw CommandError(path_ + ": " + why);
}

bool WavReader::ReadExactly(void* bytes, size_t count) {
    file_.read(static_cast<char*>(bytes), static_cast<std::streamsize>(count));
    return file_.gcount() == static_cast<std::streamsize>(count);
}

// Answers the size that the RIFF header gives for all that follows it.
uint32_t WavReader::ReadRiffHeader() {
    Chunk riff;
    char kind[4];
    if (!ReadExactly(&riff, sizeof riff) || !Is(riff.Id, "RIFF") || !ReadExactly(kind, sizeof kind) ||
        !Is(kind, "WAVE")) {
        Refuse("not a WAV file (no RIFF WAVE header)");
    }
    return riff.Size;
}

void WavReader::FindData(uint32_t riffSize) {
    for (;;) {
        Chunk chunk;
        if (!ReadExactly(&chunk, sizeof chunk)) {
            Refuse(format_.empty() ? "no format chunk" : "no data chunk");
        }
        const auto start = static_cast<uint64_t>(file_.tellg());
        if (Is(chunk.Id, "data")) {
            SetDataSize(chunk.Size, riffSize);
            return;
        }
        if (start + chunk.Size > fileSize_) {
            Refuse("truncated inside its chunk '" + Printable(chunk.Id) + "'");
        }
        if (Is(chunk.Id, "fmt ") && format_.empty()) {
            ReadFormat(chunk.Size);
        }
        // Chunks begin on even offsets; the padding is not part of the size.
        file_.seekg(static_cast<std::streamoff>(start + chunk.Size + chunk.Size % 2));
    }
}

void WavReader::ReadFormat(uint32_t size) {
    if (size < SmallestFormat || size > LargestFormat) {
        Refuse("its format chunk has a length of " + std::to_string(size) + " bytes");
    }
    format_.assign(std::max<size_t>(size, sizeof(WAVEFORMATEX)), 0);
    if (!ReadExactly(format_.data(), size)) {
        Refuse("truncated inside its format chunk");
    }
    if (sizeof(WAVEFORMATEX) + Format().cbSize > format_.size()) {
        Refuse("its format chunk is shorter than it says");
    }
    if (Format().nBlockAlign == 0 || Format().nSamplesPerSec == 0) {
        Refuse("its format has no block alignment or no sample rate");
    }
}

void WavReader::SetDataSize(uint32_t size, uint32_t riffSize) {
    if (format_.empty()) {
        Refuse("its data comes before its format");
    }
    const auto start = static_cast<uint64_t>(file_.tellg());
    const uint64_t toTheEnd = fileSize_ - start;
    // An empty data chunk is meant to be empty when the RIFF size counts in what follows it.
    const bool neverPatched = size == 0 && 8 + static_cast<uint64_t>(riffSize) <= start;
    const bool unknown = size == UnknownSize || (size == 0 && (neverPatched || riffSize == UnknownSize));
    if (!unknown && size > toTheEnd) {
        Refuse("truncated: " + std::to_string(toTheEnd) + " of " + std::to_string(size) +
               " bytes of sample data");
    }
    byteCount_ = unknown ? toTheEnd : size;
    byteCount_ -= byteCount_ % Format().nBlockAlign;
    if (byteCount_ == 0) {
        Refuse("holds no samples");
    }
}

size_t WavReader::Read(std::span<char> bytes) {
    const auto count = static_cast<size_t>(std::min<uint64_t>(bytes.size(), byteCount_ - bytesRead_));
    if (!ReadExactly(bytes.data(), count)) {
        Refuse("cannot be read to its end");
    }
    bytesRead_ += count;
    return count;
}

WavWriter::WavWriter(std::ostream& out, const WAVEFORMATEX& format) : out_(out) {
    const uint32_t formatSize = format.wFormatTag == WAVE_FORMAT_PCM
                                    ? SmallestFormat
                                    : static_cast<uint32_t>(sizeof format) + format.cbSize;
    out_.write("RIFF\0\0\0\0WAVEfmt ", 16);
    WriteSize(out_, formatSize);
    out_.write(reinterpret_cast<const char*>(&format), formatSize);
    out_.write("data\0\0\0\0", 8);
    headerSize_ = 20 + formatSize + 8;
}

void WavWriter::Write(std::span<const char> bytes) {
    dataSize_ += bytes.size();
    if (dataSize_ > UnknownSize - 1 - headerSize_) {
        throw CommandError("the sound is longer than a WAV file can hold");
    }
    out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void WavWriter::Finish() {
    const auto size = static_cast<uint32_t>(dataSize_);
    if (size % 2 != 0) {
        out_.put('\0');
    }
    out_.seekp(4);
    WriteSize(out_, headerSize_ - 8 + size + size % 2);
    out_.seekp(headerSize_ - 4);
    WriteSize(out_, size);
    out_.seekp(0, std::ios::end);
}

void WriteWav(std::ostream& out, uint32_t rate, std::span<const simulator::Frame> frames) {
    static_assert(sizeof(simulator::Frame) == 8);
    const WAVEFORMATEX format{.wFormatTag = WAVE_FORMAT_PCM,
                              .nChannels = 2,
                              .nSamplesPerSec = rate,
                              .nAvgBytesPerSec = rate * static_cast<uint32_t>(sizeof(simulator::Frame)),
                              .nBlockAlign = sizeof(simulator::Frame),
                              .wBitsPerSample = 32,
                              .cbSize = 0};
    WavWriter writer(out, format);
    writer.Write({reinterpret_cast<const char*>(frames.data()), frames.size_bytes()});
    writer.Finish();
}

std::vector<simulator::Frame> ReadFrames(WavReader& reader, const std::string& path) {
    const WAVEFORMATEX& format = reader.Format();
    const bool pcm = format.wFormatTag == WAVE_FORMAT_PCM || format.wFormatTag == WAVE_FORMAT_EXTENSIBLE;
    const size_t sampleSize = format.nChannels ? size_t{format.nBlockAlign} / format.nChannels : 0;
    if (!pcm || format.nChannels < 1 || format.nChannels > 2 || sampleSize < 1 || sampleSize > 4) {
        throw CommandError(path + ": cannot be plugged in, only PCM of one or two channels (" +
                           DescribeFormat(format) + ")");
    }
    std::vector<char> bytes(static_cast<size_t>(reader.ByteCount()));
    reader.Read(bytes);
    const auto sampleAt = [&](size_t at) {
        uint32_t slot = 0;
        std::memcpy(reinterpret_cast<char*>(&slot) + sizeof slot - sampleSize, &bytes[at], sampleSize);
        return static_cast<int32_t>(sampleSize == 1 ? slot ^ 0x80000000 : slot);  // 8 bits are unsigned
    };
    std::vector<simulator::Frame> frames;
    frames.reserve(bytes.size() / format.nBlockAlign);
    for (size_t at = 0; at < bytes.size(); at += format.nBlockAlign) {
        frames.push_back({sampleAt(at), sampleAt(at + format.nBlockAlign - sampleSize)});
    }
    return frames;
}

}  // namespace kestvox
