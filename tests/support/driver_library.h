// The driver library as the multimedia system has it: loaded, and called through its exports.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "tests/support/system.h"

class DriverLibrary {
public:
    DriverLibrary() : module_(test_system::LoadDriver()) {}
    ~DriverLibrary() {
        if (module_ != nullptr) {
            FreeLibrary(module_);
        }
    }
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    bool IsLoaded() const { return module_ != nullptr; }
    HMODULE Module() const { return module_; }

    // A function that the library exports.
    template <typename Function>
    Function Entry(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

    LRESULT DriverProc(UINT message, LPARAM param1 = 0, LPARAM param2 = 0) const {
        return Entry<DRIVERPROC>("DriverProc")(1, reinterpret_cast<HDRVR>(module_), message, param1, param2);
    }
    MMRESULT WaveOut(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1 = 0,
                     DWORD_PTR param2 = 0) const {
        return Entry<WaveMessage>("wodMessage")(device, message, user, param1, param2);
    }
    MMRESULT WaveIn(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1 = 0,
                    DWORD_PTR param2 = 0) const {
        return Entry<WaveMessage>("widMessage")(device, message, user, param1, param2);
    }

    // Opens a stream that tells `callback` of everything; `user` becomes the driver's name for it.
    MMRESULT Open(bool output, UINT device, const WAVEFORMATEX& format, DRVCALLBACK* callback, void* client,
                  DWORD_PTR* user) const {
        WAVEOPENDESC description = {};
        description.lpFormat = reinterpret_cast<LPWAVEFORMAT>(const_cast<WAVEFORMATEX*>(&format));
        description.dwCallback = reinterpret_cast<DWORD_PTR>(callback);
        description.dwInstance = reinterpret_cast<DWORD_PTR>(client);
        const auto place = reinterpret_cast<DWORD_PTR>(user);
        const auto told = reinterpret_cast<DWORD_PTR>(&description);
        return output ? WaveOut(device, WODM_OPEN, place, told, CALLBACK_FUNCTION)
                      : WaveIn(device, WIDM_OPEN, place, told, CALLBACK_FUNCTION);
    }

private:
    using WaveMessage = DWORD(WINAPI*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

    HMODULE module_;
};
