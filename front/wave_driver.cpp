#include "front/wave_driver.h"

#include <condition_variable>
#include <mutex>

#include "front/host.h"

namespace front {

namespace {

using WaveEntry = DWORD(WINAPI*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

struct Library {
    HMODULE Module = nullptr;
    DRIVERPROC Procedure = nullptr;
    WaveEntry Entries[2] = {};  // by WaveDirection; null when the driver does not have that one
    LRESULT Id = 0;             // what the driver made of DRV_OPEN

    LRESULT Send(DWORD_PTR id, UINT message, LPARAM first = 0, LPARAM second = 0) const {
        // Drivers want a handle of themselves; this one means nothing but that it is not null.
        return Procedure(id, reinterpret_cast<HDRVR>(Module), message, first, second);
    }
};

enum class State { NotLoaded, Loading, Loaded, Failed, Unloading };

struct Driver {
    std::mutex Lock;  // guards the rest; never held while the driver runs
    std::condition_variable Changed;
    State Now = State::NotLoaded;
    DWORD LoadingThread = 0;
    int Uses = 0;
    Library Code;  // constant while Loaded
};

Driver& TheDriver() {
    static auto* const driver = new Driver;
    return *driver;
}

// Sends the driver its first messages. When it refuses one, the messages that it accepted are undone, and the
// answer is false.
bool Start(Library* library) {
    if (library->Send(0, DRV_LOAD) == 0) {
        return false;
    }
    library->Send(0, DRV_ENABLE);
    library->Id = library->Send(0, DRV_OPEN);
    if (library->Id != 0) {
        return true;
    }
    library->Send(0, DRV_DISABLE);
    library->Send(0, DRV_FREE);
    return false;
}

void Stop(const Library& library) {
    library.Send(static_cast<DWORD_PTR>(library.Id), DRV_CLOSE);
    library.Send(0, DRV_DISABLE);
    library.Send(0, DRV_FREE);
}

// An exported function of the module; null when it has none of that name.
template <typename Function>
Function Import(HMODULE module, LPCSTR name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

bool Load(Library* library) {
    library->Module = host::LoadDriverLibrary();
    if (!library->Module) {
        return false;
    }
    library->Procedure = Import<DRIVERPROC>(library->Module, "DriverProc");
    library->Entries[0] = Import<WaveEntry>(library->Module, "wodMessage");
    library->Entries[1] = Import<WaveEntry>(library->Module, "widMessage");
    if (library->Procedure && Start(library)) {
        return true;
    }
    host::FreeDriverLibrary(library->Module);
    return false;
}

// REQUIRES: `hold` has the driver's lock, which is given up while the driver loads.
void LoadOnce(Driver& driver, std::unique_lock<std::mutex>& hold) {
    driver.Now = State::Loading;
    driver.LoadingThread = GetCurrentThreadId();
    hold.unlock();
    Library library;
    const bool loaded = Load(&library);
    hold.lock();
    driver.Code = library;
    driver.Now = loaded ? State::Loaded : State::Failed;
    driver.Changed.notify_all();
}

}  // namespace

WaveDriverUse::WaveDriverUse() {
    Driver& driver = TheDriver();
    std::unique_lock hold(driver.Lock);
    // A driver that calls the wave functions while it loads finds itself not loaded.
    while (driver.Now == State::Loading && driver.LoadingThread != GetCurrentThreadId()) {
        driver.Changed.wait(hold);
    }
    if (driver.Now == State::NotLoaded) {
        LoadOnce(driver, hold);
    }
    loaded_ = driver.Now == State::Loaded;
    if (loaded_) {
        ++driver.Uses;
    }
}

WaveDriverUse::~WaveDriverUse() {
    if (!loaded_) {
        return;
    }
    Driver& driver = TheDriver();
    const std::lock_guard hold(driver.Lock);
    --driver.Uses;
    driver.Changed.notify_all();
}

LRESULT WaveDriverUse::SendToDriver(DWORD_PTR id, UINT message, LPARAM first, LPARAM second) const {
    return loaded_ ? TheDriver().Code.Send(id, message, first, second) : 0;
}

HMODULE WaveDriverUse::Module() const {
    return loaded_ ? TheDriver().Code.Module : nullptr;
}

bool WaveDriverUse::Serves(WaveDirection direction) const {
    return loaded_ && TheDriver().Code.Entries[static_cast<int>(direction)];
}

DWORD WaveDriverUse::Send(WaveDirection direction, UINT device, UINT message, DWORD_PTR user, DWORD_PTR first,
                          DWORD_PTR second) const {
    if (!Serves(direction)) {
        return MMSYSERR_NODRIVER;
    }
    return TheDriver().Code.Entries[static_cast<int>(direction)](device, message, user, first, second);
}

void ReleaseWaveDriver() {
    Driver& driver = TheDriver();
    std::unique_lock hold(driver.Lock);
    if (driver.Now == State::Failed) {
        driver.Now = State::NotLoaded;
    }
    if (driver.Now != State::Loaded) {
        return;
    }
    driver.Now = State::Unloading;
    while (driver.Uses > 0) {
        driver.Changed.wait(hold);
    }
    hold.unlock();
    Stop(driver.Code);
    host::FreeDriverLibrary(driver.Code.Module);
    hold.lock();
    driver.Now = State::NotLoaded;
}

}  // namespace front
