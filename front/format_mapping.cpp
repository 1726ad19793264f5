#include "front/format_mapping.h"

#include <algorithm>
#include <utility>

#include "front/client_callback.h"

namespace front {

FormatMapping::FormatMapping(const Device& device, const WaveOpenRequest& request, WaveFormat deviceFormat,
                             std::unique_ptr<Conversion> conversion)
    : device_(device),
      clientFormat_(*request.Format),
      deviceFormat_(std::move(deviceFormat)),
      client_(request),
      conversion_(std::move(conversion)) {}

WaveOpenRequest FormatMapping::DriverRequest() const {
    WaveOpenRequest request =
        WithCallback(client_, reinterpret_cast<DWORD_PTR>(&FormatMapping::DriverCalls), this);
    request.Format = &deviceFormat_.Get();
    return request;
}

void CALLBACK FormatMapping::DriverCalls(HDRVR, DWORD message, DWORD_PTR mapping, DWORD_PTR first,
                                         DWORD_PTR second) {
    auto& self = *reinterpret_cast<FormatMapping*>(mapping);
    if (message == WOM_DONE || message == WIM_DATA) {
        self.GiveBack(*reinterpret_cast<Buffer*>(reinterpret_cast<WAVEHDR*>(first)->dwUser), message);
    } else {
        self.TellClient(message, first, second);
    }
}

void FormatMapping::TellClient(DWORD message, DWORD_PTR first, DWORD_PTR second) const {
    front::TellClient(device_, client_, message, first, second);
}

// Once the client sees its header done, it may take the buffer away.
void FormatMapping::GiveBack(Buffer& buffer, DWORD message) {
    WAVEHDR* const outer = buffer.Outer;
    if (message == WIM_DATA) {
        FillFrom(buffer);
    }
    SetFlags(*outer, (FlagsOf(*outer) & ~DWORD{WHDR_INQUEUE}) | WHDR_DONE);
    TellClient(message, reinterpret_cast<DWORD_PTR>(outer), 0);
}

MMRESULT FormatMapping::Prepare(WAVEHDR* header) {
    SetFlags(*header, (FlagsOf(*header) & ~DWORD{WHDR_DONE | WHDR_INQUEUE}) | WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}

MMRESULT FormatMapping::Unprepare(const WaveDriverUse& driver, WAVEHDR* header) {
    std::unique_ptr<Buffer> buffer;
    {
        const std::lock_guard hold(lock_);
        if (const auto found = buffers_.find(header); found != buffers_.end()) {
            buffer = std::move(found->second);
            buffers_.erase(found);
        }
    }
    SetFlags(*header, FlagsOf(*header) & ~DWORD{WHDR_PREPARED});
    return buffer ? UnprepareForDriver(driver, device_, &buffer->Header) : MMRESULT{MMSYSERR_NOERROR};
}

FormatMapping::Buffer& FormatMapping::BufferOf(WAVEHDR* header) {
    std::unique_ptr<Buffer>& buffer = buffers_[header];
    if (!buffer) {
        buffer = std::make_unique<Buffer>();
        buffer->Outer = header;
    }
    return *buffer;
}

MMRESULT FormatMapping::Queue(const WaveDriverUse& driver, WAVEHDR* header) {
    std::unique_lock hold(lock_);
    Buffer& buffer = BufferOf(header);
    if (device_.Direction == WaveDirection::Out) {
        TakeIn(buffer);
    } else {
        header->dwBytesRecorded = 0;
        buffer.Data.resize(conversion_->Needed(header->dwBufferLength));
    }
    SetFlags(*header, (FlagsOf(*header) & ~DWORD{WHDR_DONE}) | WHDR_INQUEUE);
    waiting_.push_back(&buffer);
    return HandOver(driver, hold, buffer);
}

// Converts what the client wants to play.
void FormatMapping::TakeIn(Buffer& buffer) {
    const auto* const data = reinterpret_cast<const BYTE*>(buffer.Outer->lpData);
    rest_.insert(rest_.end(), data, data + buffer.Outer->dwBufferLength);
    buffer.Data.clear();
    const size_t used = conversion_->Convert(rest_, std::exchange(begins_, false), buffer.Data);
    rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(used));
}

// Converts what was recorded.
void FormatMapping::FillFrom(Buffer& buffer) {
    const std::lock_guard hold(lock_);
    rest_.insert(rest_.end(), buffer.Data.begin(),
                 buffer.Data.begin() + static_cast<std::ptrdiff_t>(buffer.Header.dwBytesRecorded));
    const size_t used = conversion_->Convert(rest_, std::exchange(begins_, false), surplus_);
    rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(used));
    const size_t filled = std::min<size_t>(surplus_.size(), buffer.Outer->dwBufferLength);
    const auto end = surplus_.begin() + static_cast<std::ptrdiff_t>(filled);
    std::copy(surplus_.begin(), end, reinterpret_cast<BYTE*>(buffer.Outer->lpData));
    surplus_.erase(surplus_.begin(), end);
    buffer.Outer->dwBytesRecorded = static_cast<DWORD>(filled);
}

MMRESULT FormatMapping::Send(const WaveDriverUse& driver, Buffer& buffer) {
    WAVEHDR& header = buffer.Header;
    constexpr DWORD Loops = WHDR_BEGINLOOP | WHDR_ENDLOOP;
    // Its memory may have moved since.
    UnprepareForDriver(driver, device_, &header);
    header = {};
    header.lpData = reinterpret_cast<LPSTR>(buffer.Data.data());
    header.dwBufferLength = static_cast<DWORD>(buffer.Data.size());
    header.dwUser = reinterpret_cast<DWORD_PTR>(&buffer);
    header.dwFlags = FlagsOf(*buffer.Outer) & Loops;
    header.dwLoops = buffer.Outer->dwLoops;
    const MMRESULT result = PrepareForDriver(driver, device_, &header);
    return result != MMSYSERR_NOERROR ? result : QueueForDriver(driver, device_, &header, sizeof header);
}

// One thread at a time hands over, so that headers come in the order of their conversion; what another thread
// adds meanwhile is left to it. A refusal is the answer to the call that brought the header; when that call
// is over, the header comes back as if it had been played.
MMRESULT FormatMapping::HandOver(const WaveDriverUse& driver, std::unique_lock<std::mutex>& hold,
                                 const Buffer& own) {
    MMRESULT answer = MMSYSERR_NOERROR;
    if (std::exchange(handingOver_, true)) {
        return answer;
    }
    bool ownIsWaiting = true;
    while (!waiting_.empty()) {
        Buffer& next = *waiting_.front();
        waiting_.pop_front();
        const bool isOwn = ownIsWaiting && &next == &own;
        ownIsWaiting = ownIsWaiting && !isOwn;
        hold.unlock();
        const MMRESULT result = Send(driver, next);
        if (result != MMSYSERR_NOERROR && isOwn) {
            answer = result;
            SetFlags(*next.Outer, FlagsOf(*next.Outer) & ~DWORD{WHDR_INQUEUE});
        } else if (result != MMSYSERR_NOERROR) {
            GiveBack(next, device_.Direction == WaveDirection::Out ? WOM_DONE : WIM_DATA);
        }
        hold.lock();
    }
    handingOver_ = false;
    return answer;
}

MMRESULT FormatMapping::Position(const WaveDriverUse& driver, MMTIME* time) const {
    MMTIME reached = {};
    reached.wType = TIME_SAMPLES;
    const MMRESULT result = device_.Send(driver, MessagesOf(device_.Direction).Position,
                                         reinterpret_cast<DWORD_PTR>(&reached), sizeof reached);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    const uint64_t device = reached.u.sample;
    const auto samples =
        static_cast<DWORD>(device * clientFormat_->nSamplesPerSec / deviceFormat_->nSamplesPerSec);
    switch (time->wType) {
    case TIME_MS:
        time->u.ms = static_cast<DWORD>(device * 1000 / deviceFormat_->nSamplesPerSec);
        break;
    case TIME_SAMPLES:
        time->u.sample = samples;
        break;
    default:
        time->wType = TIME_BYTES;
        time->u.cb = clientFormat_.BytesOf(samples);
    }
    return MMSYSERR_NOERROR;
}

void FormatMapping::Forget() {
    const std::lock_guard hold(lock_);
    begins_ = true;
    rest_.clear();
    surplus_.clear();
}

}  // namespace front
