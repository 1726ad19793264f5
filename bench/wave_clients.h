// Clients of wave devices, each with a number of buffers of one size.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <atomic>
#include <memory>
#include <vector>

// 44100 Hz stereo.
WAVEFORMATEX StereoFormat(WORD bits);

class WaveClients {
public:
    static constexpr unsigned BuffersEach = 8;

    // Outputs first, then inputs: four devices for each card. False when one cannot be opened.
    bool Open(unsigned streams, unsigned cards, WORD bits, DWORD bufferSize);
    ~WaveClients();

    void HandIn();                           // every buffer to its driver
    unsigned Back() const { return back_; }  // since the last HandIn
    unsigned Count() const { return static_cast<unsigned>(clients_.size()) * BuffersEach; }
    void AwaitAll() const;

private:
    struct Client {
        HWAVEOUT Output;
        HWAVEIN Input;
        WAVEHDR Headers[BuffersEach];
        std::vector<std::vector<char>> Data;
    };
    static void CALLBACK OutputEvent(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR);
    static void CALLBACK InputEvent(HWAVEIN, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR);
    bool OpenDevice(Client& client, UINT device, bool output, const WAVEFORMATEX& format);
    void CountBack();

    std::vector<std::unique_ptr<Client>> clients_;
    std::atomic<unsigned> back_ = 0;
};
