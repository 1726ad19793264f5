// The driver library as the multimedia system has it: loaded, and called through its exports.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

class DriverLibrary {
public:
    DriverLibrary();
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    bool IsLoaded() const { return module_ != nullptr; }
    HMODULE Module() const { return module_; }

    LRESULT DriverProc(UINT message, LPARAM param1 = 0, LPARAM param2 = 0) const;
    MMRESULT WaveOut(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1 = 0,
                     DWORD_PTR param2 = 0) const;
    MMRESULT WaveIn(UINT device, UINT message, DWORD_PTR user, DWORD_PTR param1 = 0,
                    DWORD_PTR param2 = 0) const;

private:
    using WaveMessage = DWORD(WINAPI*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);

    HMODULE module_;
    DRIVERPROC driverProc_ = nullptr;
    WaveMessage wodMessage_ = nullptr;
    WaveMessage widMessage_ = nullptr;
};
