// Whether memory can be read, found out by reading it: the fault of a page that is not there is caught.
#include <windows.h>

#include <csetjmp>
#include <csignal>
#include <cstdint>

namespace platform {

namespace {

constexpr uintptr_t PageSize = 4096;  // or a part of it

// Whether a jump out of the handler restores the mask of signals.
#ifdef KESTVOX_SANITIZE_THREAD
constexpr int SaveMask = 1;  // the sanitizer blocks every signal in a handler
#else
constexpr int SaveMask = 0;
#endif

// Where the calling thread's probe goes on after a fault; null while it makes none.
thread_local sigjmp_buf* probe = nullptr;

struct sigaction previousActions[NSIG];

// A fault that is no probe's is the one's who was there before.
void TakeFault(int signal, siginfo_t* information, void* context) {
    if (probe != nullptr) {
        siglongjmp(*probe, 1);
    }
    const struct sigaction& previous = previousActions[signal];
    if ((previous.sa_flags & SA_SIGINFO) != 0) {
        previous.sa_sigaction(signal, information, context);
    } else if (previous.sa_handler != SIG_DFL && previous.sa_handler != SIG_IGN) {
        previous.sa_handler(signal);
    } else {
        sigaction(signal, &previous, nullptr);  // the same instruction faults again
    }
}

// The signal stays unblocked in its handler, so that leaving it by a jump needs no system call to restore the
// mask.
bool CatchFaults() {
    struct sigaction action {};
    action.sa_sigaction = TakeFault;
    action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
    for (const int signal : {SIGSEGV, SIGBUS}) {
        sigaction(signal, &action, &previousActions[signal]);
    }
    return true;
}

// Other threads may be writing there, or the memory may be nobody's: the sanitizers have no say in it.
__attribute__((noinline, no_sanitize("address", "thread"))) void Touch(uintptr_t address, uintptr_t last) {
    for (uintptr_t page = address; page < last; page = (page | (PageSize - 1)) + 1) {
        static_cast<void>(*reinterpret_cast<const volatile char*>(page));
    }
    static_cast<void>(*reinterpret_cast<const volatile char*>(last));
}

bool CanRead(uintptr_t address, uintptr_t last) {
    static const bool catches = CatchFaults();
    static_cast<void>(catches);
    sigjmp_buf fault;
    if (sigsetjmp(fault, SaveMask) != 0) {
        probe = nullptr;
        return false;
    }
    probe = &fault;
    Touch(address, last);
    probe = nullptr;
    return true;
}

}  // namespace

}  // namespace platform

BOOL WINAPI IsBadReadPtr(const void* lp, UINT_PTR ucb) {
    const auto address = reinterpret_cast<uintptr_t>(lp);
    const uintptr_t last = address + ucb - 1;
    return ucb != 0 && (last < address || !platform::CanRead(address, last)) ? TRUE : FALSE;
}
