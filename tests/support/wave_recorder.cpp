#include "tests/support/wave_recorder.h"

#include <algorithm>

namespace {

constexpr BYTE Untouched = 0xA5;
constexpr size_t GuardSize = 16;

}  // namespace

void WaveRecorder::Shut() {
    if (handle_ != nullptr) {
        waveInReset(handle_);
        Close();
    }
}

MMRESULT WaveRecorder::Open(UINT device, const WaveFormat& format) {
    HWAVEIN handle = nullptr;
    const MMRESULT result =
        waveInOpen(&handle, device, format.Get(), reinterpret_cast<DWORD_PTR>(&WaveRecorder::Callback),
                   reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
    if (result == MMSYSERR_NOERROR) {
        handle_ = handle;
    }
    return result;
}

MMRESULT WaveRecorder::Close() {
    const MMRESULT result = waveInClose(handle_);
    if (result == MMSYSERR_NOERROR) {
        handle_ = nullptr;
    }
    return result;
}

void WaveRecorder::Forget() {
    std::lock_guard lock(mutex_);
    buffers_.clear();
    doneOrder_.clear();
    counts_.clear();
    recorded_.clear();
    messages_.clear();
}

MMRESULT WaveRecorder::Add(size_t size, unsigned misalignment) {
    auto buffer = std::make_unique<Buffer>();
    buffer->Memory.assign(size + 2 * GuardSize + 16, Untouched);
    BYTE* start = buffer->Memory.data() + GuardSize;
    start += (8 - reinterpret_cast<uintptr_t>(start) % 8) % 8 + misalignment;
    WAVEHDR& header = buffer->Header;
    header = {};
    header.lpData = reinterpret_cast<LPSTR>(start);
    header.dwBufferLength = static_cast<DWORD>(size);
    waveInPrepareHeader(handle_, &header, sizeof header);
    {
        std::lock_guard lock(mutex_);
        header.dwUser = buffers_.size();
        buffers_.push_back(std::move(buffer));
    }
    return AddAgain(header);
}

unsigned WaveRecorder::DoneCount(size_t index) {
    std::lock_guard lock(mutex_);
    return buffers_[index]->Done;
}

unsigned WaveRecorder::DoneCount() {
    std::lock_guard lock(mutex_);
    return static_cast<unsigned>(doneOrder_.size());
}

std::vector<size_t> WaveRecorder::DoneOrder() {
    std::lock_guard lock(mutex_);
    return doneOrder_;
}

std::vector<UINT> WaveRecorder::Messages() {
    std::lock_guard lock(mutex_);
    return messages_;
}

std::vector<DWORD> WaveRecorder::Counts() {
    std::lock_guard lock(mutex_);
    return counts_;
}

std::vector<BYTE> WaveRecorder::Recorded() {
    std::lock_guard lock(mutex_);
    return recorded_;
}

bool WaveRecorder::GuardsIntact() {
    std::lock_guard lock(mutex_);
    const auto untouched = [](const BYTE* begin, const BYTE* end) {
        return std::all_of(begin, end, [](BYTE byte) { return byte == Untouched; });
    };
    return std::all_of(buffers_.begin(), buffers_.end(), [untouched](const auto& buffer) {
        const BYTE* memory = buffer->Memory.data();
        const BYTE* data = reinterpret_cast<const BYTE*>(buffer->Header.lpData);
        return untouched(memory, data) &&
               untouched(data + buffer->Header.dwBufferLength, memory + buffer->Memory.size());
    });
}

DWORD WaveRecorder::Position(UINT type) {
    MMTIME time = {};
    time.wType = type;
    return waveInGetPosition(handle_, &time, sizeof time) == MMSYSERR_NOERROR ? time.u.sample : 0xFFFFFFFF;
}

void CALLBACK WaveRecorder::Callback(HWAVEIN, UINT message, DWORD_PTR instance, DWORD_PTR param1, DWORD_PTR) {
    reinterpret_cast<WaveRecorder*>(instance)->Receive(message, reinterpret_cast<WAVEHDR*>(param1));
}

void WaveRecorder::Receive(UINT message, WAVEHDR* header) {
    {
        std::lock_guard lock(mutex_);
        messages_.push_back(message);
        if (message != WIM_DATA) {
            return;
        }
        const size_t index = header->dwUser;
        ++buffers_[index]->Done;
        doneOrder_.push_back(index);
        counts_.push_back(header->dwBytesRecorded);
        const BYTE* data = reinterpret_cast<const BYTE*>(header->lpData);
        recorded_.insert(recorded_.end(), data,
                         data + std::min(header->dwBytesRecorded, header->dwBufferLength));
    }
    if (onDone_) {
        onDone_(*header);
    }
}
