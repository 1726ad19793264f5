// A wave program that knows nothing of the simulated cards. Run beside the winmm.dll that leads to them, it
// plays, resets and records, and tells of every step whether it went as the system's documentation
// promises. The exit status is the number of steps that did not.
#include <windows.h>
#include <mmsystem.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr WAVEFORMATEX Stereo = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};
constexpr DWORD BufferFrames = 4410;
constexpr DWORD BufferBytes = BufferFrames * 4;
constexpr DWORD LongTime = 30000;  // ms: only a program that hangs waits for it

int failures = 0;

void Step(const char* what, bool good) {
    std::printf("%-6s %s\n", good ? "ok" : "WRONG", what);
    failures += good ? 0 : 1;
}

struct Buffer {
    explicit Buffer(DWORD bytes) : Bytes(bytes, 'k') {
        Header.lpData = Bytes.data();
        Header.dwBufferLength = bytes;
    }
    Buffer(const Buffer&) = delete;  // its header knows where the bytes are
    std::vector<char> Bytes;
    WAVEHDR Header = {};
    bool IsDone() const { return (const_cast<const volatile DWORD&>(Header.dwFlags) & WHDR_DONE) != 0; }
};

bool WaitFor(HANDLE event, const Buffer& buffer) {
    while (!buffer.IsDone()) {
        if (WaitForSingleObject(event, LongTime) != WAIT_OBJECT_0) {
            return false;
        }
    }
    return true;
}

// Makes the calls for one buffer after the other; whether all of them go well.
template <typename Device, typename... Calls>
bool ForEach(Buffer (&buffers)[3], Device device, Calls... calls) {
    bool good = true;
    for (Buffer& buffer : buffers) {
        ((good = calls(device, &buffer.Header, sizeof(WAVEHDR)) == MMSYSERR_NOERROR && good), ...);
    }
    return good;
}

// --- playing -----------------------------------------------------------------------------------

void Play(HANDLE event) {
    HWAVEOUT device = nullptr;
    const auto callback = reinterpret_cast<DWORD_PTR>(event);
    Step("play: open", waveOutOpen(&device, 0, &Stereo, callback, 0, CALLBACK_EVENT) == MMSYSERR_NOERROR);
    const DWORD before = timeGetTime();
    Buffer buffers[] = {Buffer(BufferBytes), Buffer(BufferBytes), Buffer(100 * BufferBytes)};
    Step("play: write", ForEach(buffers, device, waveOutPrepareHeader, waveOutWrite));
    Step("play: two are back", WaitFor(event, buffers[0]) && WaitFor(event, buffers[1]));
    Step("play: took their time", timeGetTime() - before >= 2 * 100 - 2);
    MMTIME time = {};
    time.wType = TIME_SAMPLES;
    Step("play: position", waveOutGetPosition(device, &time, sizeof time) == MMSYSERR_NOERROR &&
                               time.wType == TIME_SAMPLES && time.u.sample >= 2 * BufferFrames);
    Step("play: unprepare and close refused while playing",
         waveOutUnprepareHeader(device, &buffers[2].Header, sizeof(WAVEHDR)) == WAVERR_STILLPLAYING &&
             waveOutClose(device) == WAVERR_STILLPLAYING);
    Step("play: reset", waveOutReset(device) == MMSYSERR_NOERROR && WaitFor(event, buffers[2]));
    Step("play: unprepare and close",
         ForEach(buffers, device, waveOutUnprepareHeader) && waveOutClose(device) == MMSYSERR_NOERROR);
}

// --- recording ---------------------------------------------------------------------------------

void Record(HANDLE event) {
    HWAVEIN device = nullptr;
    const auto callback = reinterpret_cast<DWORD_PTR>(event);
    Step("record: open", waveInOpen(&device, 0, &Stereo, callback, 0, CALLBACK_EVENT) == MMSYSERR_NOERROR);
    Buffer buffers[] = {Buffer(BufferBytes), Buffer(BufferBytes), Buffer(100 * BufferBytes)};
    Step("record: add", ForEach(buffers, device, waveInPrepareHeader, waveInAddBuffer));
    Step("record: start", waveInStart(device) == MMSYSERR_NOERROR);
    Step("record: two are full", WaitFor(event, buffers[0]) && WaitFor(event, buffers[1]) &&
                                     buffers[0].Header.dwBytesRecorded == BufferBytes &&
                                     buffers[1].Header.dwBytesRecorded == BufferBytes);
    const std::vector<char> silence(BufferBytes, 0);
    Step("record: silence, as nothing is plugged in",
         buffers[0].Bytes == silence && buffers[1].Bytes == silence);
    Step("record: reset", waveInReset(device) == MMSYSERR_NOERROR);
    Step("record: the last one is back, not full",
         WaitFor(event, buffers[2]) && buffers[2].Header.dwBytesRecorded < 100 * BufferBytes);
    Step("record: unprepare and close",
         ForEach(buffers, device, waveInUnprepareHeader) && waveInClose(device) == MMSYSERR_NOERROR);
}

// --- the rest of the multimedia system ---------------------------------------------------------

void LookAtDevices() {
    WAVEOUTCAPSA out = {};
    WAVEINCAPSW in = {};
    char text[MAXERRORLENGTH] = {};
    Step("devices: two of each", waveOutGetNumDevs() == 2 && waveInGetNumDevs() == 2);
    Step("devices: name of an output", waveOutGetDevCapsA(0, &out, sizeof out) == MMSYSERR_NOERROR &&
                                           std::strcmp(out.szPname, "Kestrelvox Analog") == 0);
    Step("devices: name of an input", waveInGetDevCapsW(1, &in, sizeof in) == MMSYSERR_NOERROR &&
                                          lstrcmpW(in.szPname, L"Kestrelvox Digital") == 0);
    Step("devices: no third", waveOutGetDevCapsA(2, &out, sizeof out) == MMSYSERR_BADDEVICEID);
    Step("devices: text of an error",
         waveOutGetErrorTextA(WAVERR_BADFORMAT, text, sizeof text) == MMSYSERR_NOERROR && text[0] != '\0');
}

struct WaveFile {  // byte for byte
    char Riff[4] = {'R', 'I', 'F', 'F'};
    DWORD Size = 36 + BufferBytes;
    char Wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    DWORD FormatSize = sizeof(PCMWAVEFORMAT);
    PCMWAVEFORMAT Format = {{WAVE_FORMAT_PCM, 2, 44100, 176400, 4}, 16};
    char Data[4] = {'d', 'a', 't', 'a'};
    DWORD DataSize = BufferBytes;
    char Samples[BufferBytes] = {};
};

void PlaySounds() {
    const WaveFile file;
    char folder[MAX_PATH] = {};
    char path[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, folder);
    GetTempFileNameA(folder, "kv", 0, path);
    FILE* const out = std::fopen(path, "wb");
    const bool stored = out && std::fwrite(&file, sizeof file, 1, out) == 1 && std::fclose(out) == 0;
    const DWORD before = timeGetTime();
    Step("sound: a file, to its end",
         stored && PlaySoundA(path, nullptr, SND_FILENAME | SND_SYNC) && timeGetTime() - before >= 100 - 2);
    Step("sound: from memory, on and on",
         sndPlaySoundA(reinterpret_cast<LPCSTR>(&file), SND_MEMORY | SND_ASYNC | SND_LOOP) != FALSE);
    Step("sound: not over another", !PlaySoundA(path, nullptr, SND_FILENAME | SND_ASYNC | SND_NOSTOP));
    HWAVEOUT device = nullptr;
    Step("sound: the device is taken",
         waveOutOpen(&device, 0, &Stereo, 0, 0, CALLBACK_NULL) == MMSYSERR_ALLOCATED);
    Step("sound: stopped", PlaySoundA(nullptr, nullptr, 0) &&
                               waveOutOpen(&device, 0, &Stereo, 0, 0, CALLBACK_NULL) == MMSYSERR_NOERROR &&
                               waveOutClose(device) == MMSYSERR_NOERROR);
    const std::string name(path, std::strlen(path) - 4);  // the file's, without the extension
    MoveFileA(path, (name + ".wav").c_str());
    Step("sound: a name that is no alias is a file's",
         PlaySoundA(name.c_str(), nullptr, SND_ALIAS | SND_NODEFAULT) != FALSE);
    Step("sound: a number is no pointer",
         !sndPlaySoundA(MAKEINTRESOURCEA(SND_ALIAS_SYSTEMASTERISK), SND_ASYNC | SND_NODEFAULT) &&
             !PlaySoundA(MAKEINTRESOURCEA(7), nullptr, SND_ALIAS_ID | SND_NODEFAULT));
    Step("sound: the second of the calls",
         GetProcAddress(GetModuleHandleA("winmm.dll"), MAKEINTRESOURCEA(2)) ==
             GetProcAddress(GetModuleHandleA("winmm.dll"), "PlaySound"));
    DeleteFileA((name + ".wav").c_str());
    Step("sound: no file", !PlaySoundA(path, nullptr, SND_FILENAME | SND_NODEFAULT));
}

void SendToTheDriver() {
    const HDRVR driver = OpenDriver(L"kestvox.dll", nullptr, 0);
    Step("driver: open", driver != nullptr);
    Step("driver: can be configured", SendDriverMessage(driver, DRV_QUERYCONFIGURE, 0, 0) == 1);
    Step("driver: its module", GetDriverModuleHandle(driver) == GetModuleHandleW(L"kestvox.dll"));
    Step("driver: close", CloseDriver(driver, 0, 0) == 1);
    Step("driver: no other of that name", OpenDriver(L"nobody.dll", nullptr, 0) == nullptr);
}

void UseTheRest(HANDLE event) {
    Step("others: files go to the system", mmioStringToFOURCCA("wave", 0) == mmioFOURCC('w', 'a', 'v', 'e'));
    HMIXER mixer = nullptr;
    Step("others: no mixer", mixerGetNumDevs() == 0 && mixerOpen(&mixer, 0, 0, 0, 0) == MMSYSERR_BADDEVICEID);
    Step("others: an MCI device plays on the cards",
         mciSendStringA("open new type waveaudio alias sound", nullptr, 0, nullptr) == 0 &&
             mciSendStringA("close sound", nullptr, 0, nullptr) == 0);
    const MMRESULT timer = timeSetEvent(1, 1, reinterpret_cast<LPTIMECALLBACK>(event), 0,
                                        TIME_ONESHOT | TIME_CALLBACK_EVENT_SET);
    Step("others: a timer event comes", timer != 0 && WaitForSingleObject(event, LongTime) == WAIT_OBJECT_0);
}

// Prints the first samples that arrive at an input. The exit status is 1 when it does not open.
int RecordAndPrint(const char* device, const char* rate) {
    constexpr DWORD Samples = 100;
    const auto hertz = static_cast<DWORD>(std::strtoul(rate, nullptr, 10));
    const WAVEFORMATEX mono = {WAVE_FORMAT_PCM, 1, hertz, 2 * hertz, 2, 16, 0};
    HWAVEIN input = nullptr;
    Buffer buffer(2 * Samples);
    if (waveInOpen(&input, static_cast<UINT>(std::strtoul(device, nullptr, 10)), &mono, 0, 0,
                   CALLBACK_NULL) != MMSYSERR_NOERROR) {
        return 1;
    }
    waveInPrepareHeader(input, &buffer.Header, sizeof(WAVEHDR));
    waveInAddBuffer(input, &buffer.Header, sizeof(WAVEHDR));
    waveInStart(input);
    while (!buffer.IsDone()) {
        Sleep(1);
        timeGetTime();
    }
    std::vector<short> samples(Samples);
    std::memcpy(samples.data(), buffer.Bytes.data(), buffer.Bytes.size());
    std::printf("recorded %d %d %d %d\n", samples[0], samples[1], samples[2], samples[3]);
    waveInUnprepareHeader(input, &buffer.Header, sizeof(WAVEHDR));
    return waveInClose(input) == MMSYSERR_NOERROR ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], "record") == 0) {
        return RecordAndPrint(argv[2], argv[3]);
    }
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    LookAtDevices();
    // Early, so that the timer's thread has ended long before the process does: Wine may crash when both end
    // at once.
    UseTheRest(event);
    Play(event);
    Record(event);
    PlaySounds();
    SendToTheDriver();
    CloseHandle(event);
    return failures;
}
