#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/locks.h"
#include "entry/module.h"
#include "settings/card_settings_store.h"
#include "stream/service_thread.h"
#include "stream/stream_list.h"

namespace kestvox {

HMODULE ModuleHandle = nullptr;
bool InstallingFlag = false;

namespace {

bool CardExists(DWORD ordinal) {
    CardRecord probe = {};
    probe.Ordinal = ordinal;
    CardHandle* handle = nullptr;
    if (OpenCardHandle(probe, ControlChannel, &handle) != MMSYSERR_NOERROR) {
        return false;
    }
    CloseCardHandle(handle);
    return true;
}

// Finds the cards 0, 1, ... until one does not open; enables and initialises each.
void EnumerateCards() {
    for (DWORD ordinal = 0; CardExists(ordinal); ++ordinal) {
        // Once for the input side and once for the output side.
        for (int side = 0; side < 2; ++side) {
            CardAttach(ordinal);
            CardEnable(ordinal);
        }
    }
}

// Once on a machine, by the first process that loads the library: two that load it at the same moment must
// not both discover the cards. Without the mutex the discovery runs all the same. Later ones do not wait: a
// resume holds the mutex, too, for as long as another program's client likes.
void DiscoverOnce() {
    if (FirstLoadDone()) {
        return;
    }
    HANDLE discovery = CreateSharedMutex(DiscoveryMutexName);
    const DWORD wait = WaitForSingleObject(discovery, INFINITE);
    if (!FirstLoadDone()) {
        if (wait != WAIT_FAILED) {
            ForgetCards();  // what a process left that died in the middle of its discovery
        }
        EnumerateCards();
        SetFirstLoadDone();
    }
    if (discovery != nullptr) {
        ReleaseMutex(discovery);
        CloseHandle(discovery);
    }
}

// The other threads of a process that ends are gone already: nobody is waited for.
bool ProcessEnds = false;

BOOL AttachProcess(HMODULE module) {
    ModuleHandle = module;
    DisableThreadLibraryCalls(module);
    InitializeLocks();
    InitializeStreamList();
    InitializeServiceThreads();
    const BOOL mutex = OpenSharedMutexes();
    DiscoverOnce();
    ShowUnreadSettings();  // until somebody answers: no other program waits for that
    return mutex;
}

BOOL DetachProcess(bool processEnds) {
    ProcessEnds = processEnds;
    ReleaseProcess();
    DeleteServiceThreads();
    DeleteStreamList();
    DeleteLocks();
    return TRUE;
}

}  // namespace

void ReleaseProcess() {
    if (DriverMutex != nullptr) {
        const LimitedWaits limited;
        EndLibraryLife();  // before the streams are closed: nothing opens from here on
        CloseStreams(GetCurrentProcessId(), NoCard);
        // A thread that is still in the middle of something would leave a mutex taken for ever.
        if (ProcessEnds || AwaitServiceThreads()) {
            CloseSharedMutexes(ProcessEnds);
        }
    }
}

void UseAgain() {
    if (DriverMutex != nullptr || OpenSharedMutexes()) {
        BeginLibraryLife();
    }
}

}  // namespace kestvox

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        return kestvox::AttachProcess(module);
    case DLL_PROCESS_DETACH:
        return kestvox::DetachProcess(reserved != nullptr);
    case DLL_THREAD_ATTACH:
    case DLL_THREAD_DETACH:
        return TRUE;
    default:
        return FALSE;
    }
}
