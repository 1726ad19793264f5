// Plays a second of a tone in 20 buffers, some of which are in flight at a time.
// usage: player [BUFFERS]     how many; 4 when it does not say
#include <windows.h>
#include <mmsystem.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

constexpr DWORD Rate = 44100;
constexpr DWORD Frames = Rate / 20;  // of a buffer

void WaitFor(const volatile WAVEHDR& header) {
    while (!(header.dwFlags & WHDR_DONE)) {
        Sleep(1);
        timeGetTime();  // moves stepped time on
    }
}

int main(int argc, char** argv) {
    const WAVEFORMATEX format = {WAVE_FORMAT_PCM, 1, Rate, 2 * Rate, 2, 16, 0};
    HWAVEOUT device = nullptr;
    if (const MMRESULT result = waveOutOpen(&device, 0, &format, 0, 0, CALLBACK_NULL)) {
        std::printf("waveOutOpen answers %u\n", result);
        return 1;
    }
    std::vector<short> samples(Rate);
    for (DWORD i = 0; i < Rate; ++i) {
        samples[i] = static_cast<short>(16000 * std::sin(i * 440 * 6.283185307179586 / Rate));
    }
    std::vector<WAVEHDR> headers(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 4);
    for (DWORD played = 0; played < Rate; played += Frames) {
        WAVEHDR& header = headers[played / Frames % headers.size()];
        if (header.dwFlags & WHDR_PREPARED) {
            WaitFor(header);
            waveOutUnprepareHeader(device, &header, sizeof header);
        }
        header = {reinterpret_cast<LPSTR>(&samples[played]), 2 * Frames, 0, 0, 0, 0, nullptr, 0};
        waveOutPrepareHeader(device, &header, sizeof header);
        waveOutWrite(device, &header, sizeof header);
    }
    for (const WAVEHDR& header : headers) {
        WaitFor(header);
    }
    return waveOutClose(device) == MMSYSERR_NOERROR ? 0 : 1;
}
