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
constexpr DWORD Patience = 2000;     // ms

// False: it does not come back.
bool WaitFor(const volatile WAVEHDR& header) {
    const DWORD begin = timeGetTime();
    while (!(header.dwFlags & WHDR_DONE)) {
        if (timeGetTime() - begin > Patience) {  // which moves stepped time on
            std::printf("a buffer has not come back\n");
            return false;
        }
        Sleep(1);
    }
    return true;
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
    bool good = true;
    for (DWORD played = 0; played < Rate; played += Frames) {
        WAVEHDR& header = headers[played / Frames % headers.size()];
        if (header.dwFlags & WHDR_PREPARED) {
            good = WaitFor(header);
            if (!good) {
                break;
            }
            waveOutUnprepareHeader(device, &header, sizeof header);
        }
        header = {reinterpret_cast<LPSTR>(&samples[played]), 2 * Frames, 0, 0, 0, 0, nullptr, 0};
        waveOutPrepareHeader(device, &header, sizeof header);
        waveOutWrite(device, &header, sizeof header);
    }
    for (size_t i = 0; i < headers.size() && good; ++i) {
        good = WaitFor(headers[i]);
    }
    if (!good) {
        waveOutReset(device);
    }
    return waveOutClose(device) == MMSYSERR_NOERROR && good ? 0 : 1;
}
