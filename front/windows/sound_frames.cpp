#include "front/windows/sound_frames.h"

#include <mmsystem.h>

#include <cstring>

#include "front/wave_format.h"
#include "front/windows/sound_source.h"

namespace front {

namespace {

// A sample of fewer bytes than four is at the top of them; of one byte it is unsigned.
int32_t SampleAt(const char* at, size_t size) {
    uint32_t slot = 0;
    std::memcpy(reinterpret_cast<char*>(&slot) + sizeof slot - size, at, size);
    return static_cast<int32_t>(size == 1 ? slot ^ 0x80000000 : slot);
}

}  // namespace

std::optional<SoundFrames> ReadSoundFrames(const WCHAR* path) {
    const std::optional<WaveSound> sound = ReadSound(path);
    if (!sound) {
        return std::nullopt;
    }
    const WaveFormat format(*reinterpret_cast<const WAVEFORMATEX*>(sound->Format.data()));
    const size_t block = format->nBlockAlign;
    const size_t size = format->nChannels == 1 || format->nChannels == 2 ? block / format->nChannels : 0;
    if (!format.IsPcm() || size < 1 || size > sizeof(int32_t)) {
        return std::nullopt;
    }
    SoundFrames read{format->nSamplesPerSec, {}};
    for (size_t at = 0; at + block <= sound->Samples.size(); at += block) {
        const char* const frame = &sound->Samples[at];
        read.Frames.push_back({SampleAt(frame, size), SampleAt(frame + block - size, size)});
    }
    return read;
}

}  // namespace front
