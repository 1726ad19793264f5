#include "tests/support/wave_player.h"

#include <cstring>

void WavePlayer::Shut() {
    if (handle_ != nullptr) {
        waveOutReset(handle_);
        Close();
    }
}

MMRESULT WavePlayer::Open(UINT device, const WaveFormat& format) {
    HWAVEOUT handle = nullptr;
    const MMRESULT result =
        waveOutOpen(&handle, device, format.Get(), reinterpret_cast<DWORD_PTR>(&WavePlayer::Callback),
                    reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result == MMSYSERR_NOERROR) {
        handle_ = handle;
    }
    return result;
}

MMRESULT WavePlayer::Close() {
    const MMRESULT result = waveOutClose(handle_);
    if (result == MMSYSERR_NOERROR) {
        handle_ = nullptr;
    }
    return result;
}

void WavePlayer::Forget() {
    std::lock_guard lock(mutex_);
    buffers_.clear();
    doneOrder_.clear();
    messages_.clear();
}

MMRESULT WavePlayer::Write(const std::vector<BYTE>& data, DWORD flags, DWORD loops, unsigned misalignment) {
    auto buffer = std::make_unique<Buffer>();
    buffer->Data.resize(data.size() + 16);
    BYTE* start = buffer->Data.data();
    start += (8 - reinterpret_cast<uintptr_t>(start) % 8) % 8 + misalignment;
    memcpy(start, data.data(), data.size());
    WAVEHDR& header = buffer->Header;
    header = {};
    header.lpData = reinterpret_cast<LPSTR>(start);
    header.dwBufferLength = static_cast<DWORD>(data.size());
    waveOutPrepareHeader(handle_, &header, sizeof header);
    header.dwFlags |= flags;
    header.dwLoops = loops;
    {
        std::lock_guard lock(mutex_);
        header.dwUser = buffers_.size();
        buffers_.push_back(std::move(buffer));
    }
    return waveOutWrite(handle_, &header, sizeof header);
}

unsigned WavePlayer::DoneCount(size_t index) {
    std::lock_guard lock(mutex_);
    return buffers_[index]->Done;
}

unsigned WavePlayer::DoneCount() {
    std::lock_guard lock(mutex_);
    return static_cast<unsigned>(doneOrder_.size());
}

std::vector<size_t> WavePlayer::DoneOrder() {
    std::lock_guard lock(mutex_);
    return doneOrder_;
}

std::vector<UINT> WavePlayer::Messages() {
    std::lock_guard lock(mutex_);
    return messages_;
}

DWORD WavePlayer::Position(UINT type) {
    MMTIME time = {};
    time.wType = type;
    return waveOutGetPosition(handle_, &time, sizeof time) == MMSYSERR_NOERROR ? time.u.sample : 0xFFFFFFFF;
}

void CALLBACK WavePlayer::Callback(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR param1, DWORD_PTR) {
    reinterpret_cast<WavePlayer*>(instance)->Receive(message, reinterpret_cast<WAVEHDR*>(param1));
}

void WavePlayer::Receive(UINT message, WAVEHDR* header) {
    {
        std::lock_guard lock(mutex_);
        messages_.push_back(message);
        if (message != WOM_DONE) {
            return;
        }
        const size_t index = header->dwUser;
        ++buffers_[index]->Done;
        doneOrder_.push_back(index);
    }
    if (onDone_) {
        onDone_(*header);
    }
}

std::vector<BYTE> Pattern(size_t count, unsigned seed) {
    std::vector<BYTE> bytes(count);
    uint32_t state = seed * 2654435761u + 1;
    for (BYTE& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<BYTE>(state >> 24);
    }
    return bytes;
}
