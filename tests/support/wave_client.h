// A client of one wave device of either direction: owns its buffers and counts what comes back.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/support/wave_formats.h"

// The calls of one direction.
struct WaveOutCalls {
    using Handle = HWAVEOUT;
    static constexpr UINT Done = WOM_DONE;
    static constexpr auto Open = waveOutOpen;
    static constexpr auto Close = waveOutClose;
    static constexpr auto Prepare = waveOutPrepareHeader;
    static constexpr auto HandIn = waveOutWrite;
    static constexpr auto Start = waveOutRestart;
    static constexpr auto Stop = waveOutPause;
    static constexpr auto Reset = waveOutReset;
    static constexpr auto Position = waveOutGetPosition;
};

struct WaveInCalls {
    using Handle = HWAVEIN;
    static constexpr UINT Done = WIM_DATA;
    static constexpr auto Open = waveInOpen;
    static constexpr auto Close = waveInClose;
    static constexpr auto Prepare = waveInPrepareHeader;
    static constexpr auto HandIn = waveInAddBuffer;
    static constexpr auto Start = waveInStart;
    static constexpr auto Stop = waveInStop;
    static constexpr auto Reset = waveInReset;
    static constexpr auto Position = waveInGetPosition;
};

template <typename Calls>
class WaveClient {
public:
    WaveClient() = default;
    WaveClient(UINT device, const WaveFormat& format) {  // opens it
        EXPECT_EQ(Open(device, format), MMSYSERR_NOERROR) << "device " << device;
    }
    ~WaveClient() {
        OnDone(nullptr);  // what it would act on may be gone
        Shut();
        ExpectGuardsIntact();
    }
    WaveClient(const WaveClient&) = delete;
    WaveClient& operator=(const WaveClient&) = delete;

    MMRESULT Open(UINT device, const WaveFormat& format) {
        typename Calls::Handle handle = nullptr;
        const MMRESULT result =
            Calls::Open(&handle, device, format.Get(), reinterpret_cast<DWORD_PTR>(&WaveClient::Callback),
                        reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION);
        if (result == MMSYSERR_NOERROR) {
            handle_ = handle;
        }
        return result;
    }
    MMRESULT Close() {
        const MMRESULT result = Calls::Close(handle_);
        if (result == MMSYSERR_NOERROR) {
            handle_ = nullptr;
        }
        return result;
    }
    MMRESULT Start() { return Calls::Start(handle_); }
    MMRESULT Stop() { return Calls::Stop(handle_); }  // an output pauses
    MMRESULT Reset() { return Calls::Reset(handle_); }
    void Shut() {  // resets and closes, when it is open
        if (handle_ != nullptr) {
            Reset();
            Close();
        }
    }
    void Forget() {  // headers, counts and messages; while it is closed
        ExpectGuardsIntact();
        std::lock_guard lock(mutex_);
        buffers_.clear();
        doneOrder_.clear();
        counts_.clear();
        recorded_.clear();
        messages_.clear();
    }

    // Once more a header that came back.
    MMRESULT HandIn(WAVEHDR& header) { return Calls::HandIn(handle_, &header, sizeof header); }

    typename Calls::Handle Handle() const { return handle_; }
    WAVEHDR& Header(size_t index) { return buffers_[index]->Header; }
    size_t HeaderCount() const { return buffers_.size(); }

    // Called from inside every WOM_DONE or WIM_DATA, on the driver's thread.
    void OnDone(std::function<void(WAVEHDR&)> action) {
        std::lock_guard lock(mutex_);
        onDone_ = std::move(action);
    }
    // ... or only from inside those on the calling thread, as a reset of its own makes them.
    void OnDoneHere(std::function<void(WAVEHDR&)> action) {
        OnDone([action = std::move(action), here = GetCurrentThreadId()](WAVEHDR& header) {
            if (GetCurrentThreadId() == here) {
                action(header);
            }
        });
    }

    unsigned DoneCount(size_t index) {  // messages for that header
        std::lock_guard lock(mutex_);
        return buffers_[index]->Done;
    }
    unsigned DoneCount() { return static_cast<unsigned>(DoneOrder().size()); }  // for all of them
    std::vector<size_t> DoneOrder() { return Locked(doneOrder_); }  // indexes of headers in order of return
    std::vector<UINT> Messages() { return Locked(messages_); }      // every message of the device in order

    DWORD Position(UINT type = TIME_SAMPLES) {
        MMTIME time = {};
        time.wType = type;
        return Calls::Position(handle_, &time, sizeof time) == MMSYSERR_NOERROR ? time.u.sample : 0xFFFFFFFF;
    }

    // Every header that the driver took has come back exactly once, as a header that comes back looks; the
    // others have not.
    void ExpectEachReturnedOnce() {
        for (size_t i = 0; i < HeaderCount(); ++i) {
            const bool taken = buffers_[i]->Taken;
            EXPECT_EQ(DoneCount(i), taken ? 1u : 0u) << "header " << i;
            const bool looksReturned = (Header(i).dwFlags & (WHDR_DONE | WHDR_INQUEUE)) == WHDR_DONE;
            EXPECT_EQ(looksReturned, taken) << "header " << i;
        }
    }

protected:
    // A prepared header with an untouched buffer of `size` bytes at `misalignment` bytes from an 8-byte
    // boundary. It stays with the client until that is gone.
    WAVEHDR& NewHeader(size_t size, unsigned misalignment) {
        auto buffer = std::make_unique<Buffer>();
        buffer->Memory.assign(size + 2 * GuardSize + 16, Untouched);
        BYTE* start = buffer->Memory.data() + GuardSize;
        start += (8 - reinterpret_cast<uintptr_t>(start) % 8) % 8 + misalignment;
        WAVEHDR& header = buffer->Header;
        header = {};
        header.lpData = reinterpret_cast<LPSTR>(start);
        header.dwBufferLength = static_cast<DWORD>(size);
        header.dwBytesRecorded = 0xFFFFFFFF;
        Calls::Prepare(handle_, &header, sizeof header);
        std::lock_guard lock(mutex_);
        header.dwUser = buffers_.size();
        buffers_.push_back(std::move(buffer));
        return header;
    }
    MMRESULT HandInNew(WAVEHDR& header) {
        const MMRESULT result = HandIn(header);
        std::lock_guard lock(mutex_);
        buffers_[header.dwUser]->Taken = result == MMSYSERR_NOERROR;
        return result;
    }

    template <typename Value>
    Value Locked(const Value& value) {
        std::lock_guard lock(mutex_);
        return value;
    }

    typename Calls::Handle handle_ = nullptr;
    std::vector<DWORD> counts_;  // dwBytesRecorded in order of return, and those bytes
    std::vector<BYTE> recorded_;

private:
    static constexpr BYTE Untouched = 0xA5;
    static constexpr size_t GuardSize = 16;

    struct Buffer {
        WAVEHDR Header;
        std::vector<BYTE> Memory;
        unsigned Done;
        bool Taken;  // by the driver, when it was new
    };

    // Nothing was written outside a buffer.
    void ExpectGuardsIntact() {
        std::lock_guard lock(mutex_);
        const auto untouched = [](const BYTE* begin, const BYTE* end) {
            return std::all_of(begin, end, [](BYTE byte) { return byte == Untouched; });
        };
        for (const auto& buffer : buffers_) {
            const BYTE* memory = buffer->Memory.data();
            const BYTE* data = reinterpret_cast<const BYTE*>(buffer->Header.lpData);
            EXPECT_TRUE(untouched(memory, data)) << "before header " << buffer->Header.dwUser;
            EXPECT_TRUE(untouched(data + buffer->Header.dwBufferLength, memory + buffer->Memory.size()));
        }
    }

    static void CALLBACK Callback(typename Calls::Handle, UINT message, DWORD_PTR instance, DWORD_PTR param1,
                                  DWORD_PTR) {
        reinterpret_cast<WaveClient*>(instance)->Receive(message, reinterpret_cast<WAVEHDR*>(param1));
    }

    void Receive(UINT message, WAVEHDR* header) {
        std::function<void(WAVEHDR&)> action;
        {
            std::lock_guard lock(mutex_);
            messages_.push_back(message);
            if (message != Calls::Done) {
                return;
            }
            ++buffers_[header->dwUser]->Done;
            doneOrder_.push_back(header->dwUser);
            counts_.push_back(header->dwBytesRecorded);
            const BYTE* data = reinterpret_cast<const BYTE*>(header->lpData);
            recorded_.insert(recorded_.end(), data,
                             data + std::min(header->dwBytesRecorded, header->dwBufferLength));
            action = onDone_;
        }
        if (action) {
            action(*header);
        }
    }

    std::function<void(WAVEHDR&)> onDone_;
    std::mutex mutex_;  // guards what the callback changes
    std::vector<std::unique_ptr<Buffer>> buffers_;
    std::vector<size_t> doneOrder_;
    std::vector<UINT> messages_;
};
