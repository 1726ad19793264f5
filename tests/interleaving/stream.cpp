#include "tests/interleaving/stream.h"

#include <algorithm>

#include "tests/support/wave_formats.h"

namespace interleaving {
namespace {

// What is played is of no interest: all headers of outputs share it.
alignas(4) char sound[Stream::LongHeader];

}  // namespace

Stream::Stream(const DriverLibrary& driver, const StreamPlan& plan)
    : driver_(driver),
      plan_(plan),
      recorded_(plan.Output ? nullptr : std::make_unique_for_overwrite<char[]>(LongHeader)) {}

MMRESULT Stream::Tell(UINT output, UINT input, DWORD_PTR first, DWORD_PTR second) {
    const DWORD_PTR user = user_;
    if (user == 0) {
        return MMSYSERR_INVALHANDLE;
    }
    return plan_.Output ? driver_.WaveOut(plan_.Device(), output, user, first, second)
                        : driver_.WaveIn(plan_.Device(), input, user, first, second);
}

MMRESULT Stream::Send(Message message) {
    MMTIME time = {};
    time.wType = TIME_SAMPLES;
    switch (message) {
    case Message::Open:
        return Open(Rate);
    case Message::OpenApart:
        return Open(OtherRate);
    case Message::Write:
        return Write(LongHeader);
    case Message::Start:
        return Tell(WODM_RESTART, WIDM_START);
    case Message::Stop:
        return Tell(WODM_PAUSE, WIDM_STOP);
    case Message::Break:
        return Tell(WODM_BREAKLOOP, WIDM_STOP);
    case Message::Reset:
        return Tell(WODM_RESET, WIDM_RESET);
    case Message::Close:
        return Close();
    case Message::Shut:
    case Message::WriteThree: {
        MMRESULT last = MMSYSERR_NOERROR;
        for (const Message part : PartsOf(message)) {
            last = Send(part);
        }
        return last;
    }
    case Message::Position:
        return Tell(WODM_GETPOS, WIDM_GETPOS, reinterpret_cast<DWORD_PTR>(&time), sizeof time);
    case Message::Volume:
        return Tell(WODM_SETVOLUME, WIDM_GETPOS, 0x8000, 0);
    default:
        return MMSYSERR_NOTSUPPORTED;
    }
}

MMRESULT Stream::Open(DWORD rate, WORD bits) {
    DWORD_PTR user = 0;
    const MMRESULT result =
        driver_.Open(plan_.Output, plan_.Device(), PcmFormat(rate, 1, bits), &Stream::Callback, this, &user);
    if (result == MMSYSERR_NOERROR) {
        user_ = user;
    }
    return result;
}

MMRESULT Stream::Close() {
    if (closing_.exchange(true)) {
        return MMSYSERR_INVALHANDLE;
    }
    const MMRESULT result = Tell(WODM_CLOSE, WIDM_CLOSE);
    if (result == MMSYSERR_NOERROR) {
        user_ = 0;
    }
    closing_ = false;
    return result;
}

MMRESULT Stream::Write(DWORD length, DWORD flags, DWORD loops) {
    Header* header = nullptr;
    {
        const std::lock_guard guard(lock_);
        headers_.push_back(std::make_unique<Header>());
        header = headers_.back().get();
        header->Away = 1;
    }
    header->Wave = {};
    header->Wave.lpData = plan_.Output ? sound : recorded_.get();
    header->Wave.dwBufferLength = length;
    header->Wave.dwUser = reinterpret_cast<DWORD_PTR>(header);
    header->Wave.dwFlags = WHDR_PREPARED | flags;
    header->Wave.dwLoops = loops;
    const MMRESULT result =
        Tell(WODM_WRITE, WIDM_ADDBUFFER, reinterpret_cast<DWORD_PTR>(&header->Wave), sizeof header->Wave);
    if (result != MMSYSERR_NOERROR) {
        --header->Away;
    }
    return result;
}

void Stream::OnNextDone(std::function<void()> action) {
    const std::lock_guard guard(lock_);
    onNextDone_ = std::move(action);
}

void Stream::Forget() {
    Orphan();
    const std::lock_guard guard(lock_);
    for (auto& header : headers_) {
        header->Away = header->Away > 0 ? 0 : header->Away.load();
    }
}

unsigned Stream::Count(bool (*wanted)(int away)) {
    const std::lock_guard guard(lock_);
    return static_cast<unsigned>(std::count_if(headers_.begin(), headers_.end(),
                                               [&](const auto& header) { return wanted(header->Away); }));
}

void Stream::Returned(WAVEHDR* header) {
    std::function<void()> action;
    {
        const std::lock_guard guard(lock_);
        action.swap(onNextDone_);
    }
    --reinterpret_cast<Header*>(header->dwUser)->Away;
    if (action) {
        action();
    }
}

void CALLBACK Stream::Callback(HDRVR, UINT message, DWORD_PTR instance, DWORD_PTR first, DWORD_PTR) {
    auto& stream = *reinterpret_cast<Stream*>(instance);
    switch (message) {
    case WOM_DONE:
    case WIM_DATA:
        stream.Returned(reinterpret_cast<WAVEHDR*>(first));
        break;
    case WOM_OPEN:
    case WIM_OPEN:
        stream.toldOfOpen_ = true;
        break;
    default:
        stream.wrongCloses_ += stream.toldOfOpen_.exchange(false) ? 0 : 1;
    }
}

}  // namespace interleaving
