#include "tools/files/wav_writer.h"

#include <algorithm>

#include "tools/files/wav_sizes.h"

namespace kestvox {
namespace {

template <typename T>
std::span<const char> BytesOf(const T& value, size_t size = sizeof(T)) {
    return {reinterpret_cast<const char*>(&value), size};
}

}  // namespace

WavWriter::WavWriter(OutputFile& out, const WAVEFORMATEX& format)
    : out_(out), frameSize_(std::max<WORD>(format.nBlockAlign, 1)) {
    const uint32_t formatSize = format.wFormatTag == WAVE_FORMAT_PCM
                                    ? SmallestFormat
                                    : static_cast<uint32_t>(sizeof format) + format.cbSize;
    headerSize_ = 20 + formatSize + 8;
    out_.Write({"RIFF", 4});
    WriteSize(UnknownSize);
    out_.Write({"WAVEfmt ", 8});
    WriteSize(formatSize);
    out_.Write(BytesOf(format, formatSize));
    out_.Write({"data", 4});
    WriteSize(UnknownSize);
}

void WavWriter::WriteSize(uint32_t size) {
    out_.Write(BytesOf(size));
}

void WavWriter::Write(std::span<const char> bytes) {
    const uint64_t most = UnknownSize - 1 - headerSize_;
    if (out_.IsRegular() && dataSize_ + bytes.size() > most) {
        problem_ = "the sound is longer than a WAV file can hold";
        bytes = bytes.first(static_cast<size_t>((most - dataSize_) / frameSize_ * frameSize_));
    }
    dataSize_ += bytes.size();
    out_.Write(bytes);
}

void WavWriter::Finish() {
    if (!out_.IsRegular()) {
        out_.Commit();
        return;
    }
    if (dataSize_ % 2 != 0) {
        out_.Write({"", 1});
    }
    const uint64_t written = out_.Flush();
    if (written < headerSize_) {
        return;
    }
    if (written < headerSize_ + dataSize_ + dataSize_ % 2) {
        const uint64_t unit = uint64_t{frameSize_} * (1 + frameSize_ % 2);  // needs no padding
        dataSize_ = (written - headerSize_) / unit * unit;
        out_.CutTo(headerSize_ + dataSize_);
    }
    const auto size = static_cast<uint32_t>(dataSize_);
    out_.WriteAt(4, BytesOf<uint32_t>(headerSize_ - 8 + size + size % 2));
    out_.WriteAt(headerSize_ - 4, BytesOf(size));
    out_.Commit();
}

}  // namespace kestvox
