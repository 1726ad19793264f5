// PlaySound: one sound of the process at a time, on the wave mapper.
#include <windows.h>
#include <mmsystem.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "front/windows/sound_source.h"
#include "front/windows/system_handle.h"

namespace front {

namespace {

// One sound on its way through a device.
class PlayingSound {
public:
    explicit PlayingSound(WaveSound sound) : sound_(std::move(sound)) {}
    ~PlayingSound() {
        if (device_) {
            Close();
        }
    }
    PlayingSound(const PlayingSound&) = delete;
    PlayingSound& operator=(const PlayingSound&) = delete;

    bool Start(bool forEver) {
        const auto* const format = reinterpret_cast<const WAVEFORMATEX*>(sound_.Format.data());
        if (!done_ || !stop_ ||
            waveOutOpen(&device_, WAVE_MAPPER, format, reinterpret_cast<DWORD_PTR>(HANDLE{done_}), 0,
                        CALLBACK_EVENT) != MMSYSERR_NOERROR) {
            device_ = nullptr;
            return false;
        }
        header_.lpData = sound_.Samples.data();
        header_.dwBufferLength =
            static_cast<DWORD>(sound_.Samples.size() - sound_.Samples.size() % format->nBlockAlign);
        if (forEver) {
            header_.dwFlags = WHDR_BEGINLOOP | WHDR_ENDLOOP;
            header_.dwLoops = INFINITE;
        }
        return waveOutPrepareHeader(device_, &header_, sizeof header_) == MMSYSERR_NOERROR &&
               waveOutWrite(device_, &header_, sizeof header_) == MMSYSERR_NOERROR;
    }

    // Returns when the sound has ended or AskToStop was called.
    void PlayToTheEnd() {
        const HANDLE events[] = {stop_, done_};
        while (!IsBack() && WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0) {
        }
        Close();
    }

    void AskToStop() { SetEvent(stop_); }

private:
    bool IsBack() const { return (__atomic_load_n(&header_.dwFlags, __ATOMIC_ACQUIRE) & WHDR_DONE) != 0; }

    void Close() {
        waveOutReset(device_);
        waveOutUnprepareHeader(device_, &header_, sizeof header_);
        waveOutClose(std::exchange(device_, nullptr));
    }

    WaveSound sound_;
    SystemHandle done_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    SystemHandle stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    HWAVEOUT device_ = nullptr;
    WAVEHDR header_ = {};
};

// What plays at the moment: one sound of the process at a time.
class Stage {
public:
    // False when SND_NOSTOP forbids it or the sound cannot be played.
    bool Play(WaveSound sound, DWORD flags) {
        const std::lock_guard turn(turn_);
        if (IsBusy() && Has(flags, SND_NOSTOP)) {
            return false;
        }
        Clear();
        auto playing = std::make_unique<PlayingSound>(std::move(sound));
        const bool forEver = Has(flags, SND_LOOP | SND_ASYNC);
        if (!playing->Start(forEver)) {
            return false;
        }
        if (!Has(flags, SND_ASYNC)) {
            playing->PlayToTheEnd();
            return true;
        }
        playing_ = std::move(playing);
        DWORD id = 0;
        thread_ = CreateThread(nullptr, 0, &Stage::Run, playing_.get(), 0, &id);
        return thread_ != nullptr;
    }

    void Stop() {
        const std::lock_guard turn(turn_);
        Clear();
    }

private:
    static DWORD WINAPI Run(LPVOID playing) {
        static_cast<PlayingSound*>(playing)->PlayToTheEnd();
        return 0;
    }

    bool IsBusy() const { return thread_ && WaitForSingleObject(thread_, 0) == WAIT_TIMEOUT; }

    void Clear() {
        if (thread_) {
            playing_->AskToStop();
            WaitForSingleObject(thread_, INFINITE);
            CloseHandle(std::exchange(thread_, nullptr));
        }
        playing_.reset();
    }

    std::mutex turn_;  // held while a sound is played that the caller waits for: the next waits, too
    std::unique_ptr<PlayingSound> playing_;
    HANDLE thread_ = nullptr;
};

Stage& TheStage() {
    static auto* const stage = new Stage;
    return *stage;
}

BOOL Play(LPCWSTR name, HMODULE module, DWORD flags) {
    if (!name || Has(flags, SND_PURGE)) {
        TheStage().Stop();
        return TRUE;
    }
    std::optional<WaveSound> sound = LoadSound(name, module, flags);
    return sound && TheStage().Play(std::move(*sound), flags);
}

}  // namespace

}  // namespace front

BOOL WINAPI PlaySoundW(LPCWSTR name, HMODULE module, DWORD flags) {
    return front::Play(name, module, flags);
}

BOOL WINAPI PlaySoundA(LPCSTR name, HMODULE module, DWORD flags) {
    if (!front::IsText(reinterpret_cast<LPCWSTR>(name), flags)) {
        return PlaySoundW(reinterpret_cast<LPCWSTR>(name), module, flags);
    }
    WCHAR wide[MAX_PATH] = {};
    return MultiByteToWideChar(CP_ACP, 0, name, -1, wide, MAX_PATH) != 0 && PlaySoundW(wide, module, flags);
}

// The 16-bit name of PlaySoundA.
#undef PlaySound
extern "C" BOOL WINAPI PlaySound(LPCSTR name, HMODULE module, DWORD flags) {
    return PlaySoundA(name, module, flags);
}

// The older calls know files and memory only, and none of the newer flags.
constexpr UINT OlderFlags = 0xFFFF;

BOOL WINAPI sndPlaySoundW(LPCWSTR name, UINT flags) {
    return PlaySoundW(name, nullptr, flags & OlderFlags);
}

BOOL WINAPI sndPlaySoundA(LPCSTR name, UINT flags) {
    return PlaySoundA(name, nullptr, flags & OlderFlags);
}
