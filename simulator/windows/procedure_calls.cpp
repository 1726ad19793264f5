#include "simulator/windows/procedure_calls.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

#include "simulator/windows/system_calls.h"

namespace simulator {
namespace {

constexpr DWORD LookInterval = 5;  // milliseconds between looks for threads that have ended

// A thread that gets calls.
struct Receiver {
    explicit Receiver(HANDLE handle) : Handle(handle) {}
    ~Receiver() { CloseHandle(Handle); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    bool Ended() const { return WaitForSingleObject(Handle, 0) == WAIT_OBJECT_0; }

    const HANDLE Handle;
    unsigned Queued = 0;  // calls that have not returned
};
using ReceiverReference = std::shared_ptr<Receiver>;

class Receivers {
public:
    ReceiverReference Find(HANDLE thread) {
        const std::lock_guard guard(lock_);
        std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
        std::weak_ptr<Receiver>& known = known_[GetThreadId(thread)];
        ReceiverReference receiver = known.lock();
        if (!receiver || receiver->Ended()) {
            HANDLE handle = nullptr;
            const HANDLE self = GetCurrentProcess();
            DuplicateHandle(self, thread, self, &handle, 0, FALSE, DUPLICATE_SAME_ACCESS);
            receiver = std::make_shared<Receiver>(handle);
            known = receiver;
        }
        return receiver;
    }

    bool Queue(const ReceiverReference& receiver, device::ProcedureCall deliver, ULONG_PTR routine,
               ULONG_PTR argument) {
        const std::lock_guard guard(lock_);
        const auto third = reinterpret_cast<ULONG_PTR>(receiver.get());
        if (NtQueueApcThread(receiver->Handle, deliver, routine, argument, third) < 0) {
            return false;
        }
        ++receiver->Queued;
        if (std::find(busy_.begin(), busy_.end(), receiver) == busy_.end()) {
            busy_.push_back(receiver);
            ResetEvent(quiet_);
        }
        return true;
    }

    void Returned(Receiver* receiver) {
        const std::lock_guard guard(lock_);
        --receiver->Queued;
    }

    // The calling thread is about to wait alertably.
    void Waiting() {
        const std::lock_guard guard(lock_);
        const auto known = known_.find(GetCurrentThreadId());
        if (known != known_.end()) {
            const ReceiverReference receiver = known->second.lock();
            Forget([&](const ReceiverReference& busy) { return busy == receiver && busy->Queued == 0; });
        }
    }

    void ForgetEnded() {
        const std::lock_guard guard(lock_);
        Forget([](const ReceiverReference& busy) { return busy->Ended(); });
    }

    bool WaitUntilQuiet(DWORD milliseconds) {
        for (DWORD waited = 0; !IsQuiet(); waited += LookInterval) {
            if (waited >= milliseconds) {
                return false;
            }
            WaitForSingleObject(quiet_, LookInterval);
        }
        return true;
    }

private:
    bool IsQuiet() {
        const std::lock_guard guard(lock_);
        Forget([](const ReceiverReference& busy) { return busy->Ended(); });
        return busy_.empty();
    }

    template <typename Condition>
    void Forget(Condition condition) {
        if (std::erase_if(busy_, condition) != 0 && busy_.empty()) {
            SetEvent(quiet_);
        }
    }

    host::Lock lock_;
    std::map<DWORD, std::weak_ptr<Receiver>> known_;  // by thread number
    std::vector<ReceiverReference> busy_;             // have not waited since they were called
    const HANDLE quiet_ = CreateEventW(nullptr, TRUE, TRUE, nullptr);
};

// Never destroyed: threads of the driver may outlive every other object of the program.
Receivers& AllReceivers() {
    static Receivers& all = *new Receivers;
    return all;
}

void CALLBACK DeliverKernelCall(ULONG_PTR routine, ULONG_PTR argument, ULONG_PTR receiver) {
    reinterpret_cast<device::ProcedureCall>(routine)(argument, 0, 0);
    AllReceivers().Returned(reinterpret_cast<Receiver*>(receiver));
}

void CALLBACK DeliverUserCall(ULONG_PTR routine, ULONG_PTR argument, ULONG_PTR receiver) {
    reinterpret_cast<PAPCFUNC>(routine)(argument);
    AllReceivers().Returned(reinterpret_cast<Receiver*>(receiver));
}

}  // namespace

namespace windows {

DWORD WINAPI QueueUserCall(PAPCFUNC routine, HANDLE thread, ULONG_PTR data) {
    if (GetThreadId(thread) == 0) {
        return 0;
    }
    if (!AllReceivers().Queue(AllReceivers().Find(thread), DeliverUserCall,
                              reinterpret_cast<ULONG_PTR>(routine), data)) {
        SetLastError(ERROR_GEN_FAILURE);
        return 0;
    }
    return 1;
}

DWORD WINAPI WaitForObject(HANDLE object, DWORD milliseconds, BOOL alertable) {
    if (alertable) {
        AllReceivers().Waiting();
    }
    return WaitForSingleObjectEx(object, milliseconds, alertable);
}

DWORD WINAPI SleepAlertably(DWORD milliseconds, BOOL alertable) {
    if (alertable) {
        AllReceivers().Waiting();
    }
    return SleepEx(milliseconds, alertable);
}

void ForgetEndedThreads() {
    AllReceivers().ForgetEnded();
}

}  // namespace windows

namespace host {

Thread CurrentThread() {
    return AllReceivers().Find(GetCurrentThread());
}

uint64_t CurrentThreadId() {
    return GetCurrentThreadId();
}

void QueueCall(const Thread& thread, device::ProcedureCall routine, ULONG_PTR first) {
    // The call is lost when the thread has ended, as in a kernel.
    AllReceivers().Queue(std::static_pointer_cast<Receiver>(thread), DeliverKernelCall,
                         reinterpret_cast<ULONG_PTR>(routine), first);
}

bool WaitUntilQuiet(DWORD milliseconds) {
    return AllReceivers().WaitUntilQuiet(milliseconds);
}

}  // namespace host
}  // namespace simulator
