#include "bench/answering_device.h"

#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "card/protocol.h"

namespace {

using namespace kestvox;

struct File {
    unsigned Card;
    ULONG_PTR Cookie;
    platform::ThreadReference Thread;
    device::ProcedureCall Routine;
};

ULONG_PTR Word(const device::Request& request) {
    ULONG_PTR word = 0;
    memcpy(&word, request.Input, sizeof word);
    return word;
}

}  // namespace

AnsweringDevice::AnsweringDevice(unsigned cards) : cards_(cards) {
    platform::InstallDeviceDriver(this);
    platform::InstallTimeSource(this);
}

AnsweringDevice::~AnsweringDevice() {
    platform::InstallTimeSource(nullptr);
    platform::InstallDeviceDriver(nullptr);
}

// Really: who sleeps waits for another thread.
void AnsweringDevice::Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

DWORD AnsweringDevice::Open(const WCHAR* path, void** file) {
    const std::u16string name = path;
    for (unsigned card = 0; card < cards_; ++card) {
        WCHAR number[8];
        wsprintfW(number, TEXT("%u"), card);
        if (name == u"\\\\.\\Kestrelvox" + std::u16string(number)) {
            *file = new File{card, 0, nullptr, nullptr};
            return ERROR_SUCCESS;
        }
    }
    return ERROR_FILE_NOT_FOUND;
}

void AnsweringDevice::Close(void* file) {
    delete static_cast<File*>(file);
}

void AnsweringDevice::CompleteNext() {
    const std::lock_guard guard(lock_);
    if (!held_.empty()) {
        Complete(held_.front());
        held_.pop_front();
    }
}

void AnsweringDevice::Complete(const Completion& done) {
    platform::QueueProcedureCall(done.Thread, done.Routine, done.Cookie, 0, 0);
}

DWORD AnsweringDevice::Control(void* opened, device::Request& request) {
    File& file = *static_cast<File*>(opened);
    ++requests_;
    switch (request.Code) {
    case IOCTL_SET_BUFFER_COOKIE:
        file.Cookie = Word(request);
        return ERROR_SUCCESS;
    case IOCTL_SET_COMPLETION_ROUTINE:
        file.Thread = platform::CurrentThreadReference();
        file.Routine = reinterpret_cast<device::ProcedureCall>(Word(request));
        return ERROR_SUCCESS;
    case IOCTL_QUEUE_BUFFER:
        if (holds_) {
            const std::lock_guard guard(lock_);
            held_.push_back({file.Thread, file.Routine, file.Cookie});
        } else {
            Complete({file.Thread, file.Routine, file.Cookie});
        }
        return ERROR_SUCCESS;
    case IOCTL_FLUSH_BUFFERS: {
        const std::lock_guard guard(lock_);
        for (const Completion& done : held_) {
            Complete(done);
        }
        held_.clear();
        return ERROR_SUCCESS;
    }
    case IOCTL_GET_POSITION:  // a recorded buffer then counts as full
    case IOCTL_GET_REGISTRY_PATH:
        return ERROR_GEN_FAILURE;
    case IOCTL_READ_REGISTER:
    case IOCTL_READ_CLOCK_FAULT:
    case IOCTL_READ_NVRAM_PAGE:
    case IOCTL_READ_PCI_CONFIG:
        memset(request.Output, 0, request.OutputLength);
        request.BytesReturned = request.OutputLength;
        return ERROR_SUCCESS;
    default:
        return ERROR_SUCCESS;
    }
}
