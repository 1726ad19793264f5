// A wave format with everything that belongs to it.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <vector>

namespace front {

class WaveFormat {
public:
    // A copy of the client's. An extensible format whose samples fill their containers becomes the plain one
    // that it stands for, which every converter knows.
    explicit WaveFormat(const WAVEFORMATEX& format);

    static WaveFormat Pcm(DWORD rate, WORD channels, WORD bits);

    const WAVEFORMATEX& Get() const { return *reinterpret_cast<const WAVEFORMATEX*>(bytes_.data()); }
    const WAVEFORMATEX* operator->() const { return &Get(); }
    bool IsPcm() const { return Get().wFormatTag == WAVE_FORMAT_PCM; }

    // Of sound that lasts as long as `samples` do.
    DWORD BytesOf(DWORD samples) const;

private:
    std::vector<BYTE> bytes_;
};

}  // namespace front
