#include "bench/wave_clients.h"

WAVEFORMATEX StereoFormat(WORD bits) {
    const auto frame = static_cast<WORD>(bits / 8 * 2);
    return {WAVE_FORMAT_PCM, 2, 44100, static_cast<DWORD>(44100) * frame, frame, bits, 0};
}

void WaveClients::CountBack() {
    if (++back_ == Count()) {
        back_.notify_one();
    }
}

void CALLBACK WaveClients::OutputEvent(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
    if (message == WOM_DONE) {
        reinterpret_cast<WaveClients*>(instance)->CountBack();
    }
}

void CALLBACK WaveClients::InputEvent(HWAVEIN, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
    if (message == WIM_DATA) {
        reinterpret_cast<WaveClients*>(instance)->CountBack();
    }
}

bool WaveClients::OpenDevice(Client& client, UINT device, bool output, const WAVEFORMATEX& format) {
    const auto instance = reinterpret_cast<DWORD_PTR>(this);
    if (output) {
        return waveOutOpen(&client.Output, device, &format, reinterpret_cast<DWORD_PTR>(&OutputEvent),
                           instance, CALLBACK_FUNCTION) == MMSYSERR_NOERROR;
    }
    return waveInOpen(&client.Input, device, &format, reinterpret_cast<DWORD_PTR>(&InputEvent), instance,
                      CALLBACK_FUNCTION) == MMSYSERR_NOERROR &&
           waveInStart(client.Input) == MMSYSERR_NOERROR;
}

bool WaveClients::Open(unsigned streams, unsigned cards, WORD bits, DWORD bufferSize) {
    const WAVEFORMATEX format = StereoFormat(bits);
    const unsigned outputs = cards * 2;
    for (unsigned i = 0; i < streams; ++i) {
        clients_.push_back(std::make_unique<Client>());
        Client& client = *clients_.back();
        const bool output = i < outputs;
        if (!OpenDevice(client, output ? i : i - outputs, output, format)) {
            return false;
        }
        for (WAVEHDR& header : client.Headers) {
            client.Data.emplace_back(bufferSize);
            header.lpData = client.Data.back().data();
            header.dwBufferLength = bufferSize;
            if (output) {
                waveOutPrepareHeader(client.Output, &header, sizeof header);
            } else {
                waveInPrepareHeader(client.Input, &header, sizeof header);
            }
        }
    }
    return true;
}

WaveClients::~WaveClients() {
    for (const auto& client : clients_) {
        if (client->Output != nullptr) {
            waveOutReset(client->Output);
            waveOutClose(client->Output);
        }
        if (client->Input != nullptr) {
            waveInReset(client->Input);
            waveInClose(client->Input);
        }
    }
}

void WaveClients::HandIn() {
    back_ = 0;
    for (unsigned i = 0; i < BuffersEach; ++i) {
        for (const auto& client : clients_) {
            WAVEHDR& header = client->Headers[i];
            if (client->Output != nullptr) {
                waveOutWrite(client->Output, &header, sizeof header);
            } else {
                waveInAddBuffer(client->Input, &header, sizeof header);
            }
        }
    }
}

void WaveClients::AwaitAll() const {
    for (unsigned back = back_; back != Count(); back = back_) {
        back_.wait(back);
    }
}
