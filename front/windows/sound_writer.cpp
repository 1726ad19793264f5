#include "front/windows/sound_writer.h"

#include <windows.h>
#include <mmsystem.h>

#include <utility>

namespace front {

namespace {

constexpr DWORD FrameSize = sizeof(simulator::Frame);

#pragma pack(push, 1)
struct FileHeader {
    char Riff[4] = {'R', 'I', 'F', 'F'};
    DWORD Size;
    char Format[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    DWORD FormatSize = sizeof(PCMWAVEFORMAT);
    PCMWAVEFORMAT Pcm;
    char Data[4] = {'d', 'a', 't', 'a'};
    DWORD DataSize;
};
#pragma pack(pop)

// The file's size has 32 bits.
constexpr size_t MostFrames = (UINT32_MAX - sizeof(FileHeader)) / FrameSize;

}  // namespace

SoundWriter::SoundWriter(const std::wstring& path, unsigned rate)
    : rate_(rate), file_(_wfopen(path.c_str(), L"wb")) {
    WriteHeader();
}

SoundWriter::~SoundWriter() {
    Finish();
}

void SoundWriter::WriteHeader() {
    FileHeader header{};
    header.Size = sizeof header - 8 + dataSize_;
    header.Pcm = {{WAVE_FORMAT_PCM, 2, rate_, rate_ * FrameSize, FrameSize}, 32};
    header.DataSize = dataSize_;
    whole_ = whole_ && file_ && std::fwrite(&header, sizeof header, 1, file_) == 1;
}

void SoundWriter::Write(std::span<const simulator::Frame> frames) {
    whole_ = whole_ && frames.size() <= MostFrames - dataSize_ / FrameSize;
    if (whole_) {
        const size_t written = std::fwrite(frames.data(), FrameSize, frames.size(), file_);
        dataSize_ += static_cast<uint32_t>(written) * FrameSize;
        whole_ = written == frames.size();
    }
}

bool SoundWriter::Finish() {
    if (file_) {
        std::rewind(file_);
        WriteHeader();
        whole_ = std::fclose(std::exchange(file_, nullptr)) == 0 && whole_;
    }
    return whole_;
}

}  // namespace front
