// The commands of the program. Each prints its result on standard output, answers the exit status, and
// throws CommandError for what it cannot do.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/scene.h"

namespace kestvox {

inline constexpr int ExitSuccess = 0;
inline constexpr int ExitFailed = 1;   // something went wrong on the way
inline constexpr int ExitRefused = 2;  // CommandError
inline constexpr int ExitInterrupted = 130;

struct PlayOptions {
    SceneOptions Scene;
    std::vector<std::string> Files;  // one for all devices, or one for each
    std::vector<unsigned> Devices = {0};
    unsigned Buffers = 8;
    unsigned BufferMilliseconds = 50;
    DWORD Passes = 1;
    std::optional<WORD> Volume;
    std::string Capture;  // empty: none
    std::string Trace;    // empty: none
};

int ListDevices(const SceneOptions& options);
int Play(const PlayOptions& options);
// Without assignments shows every setting; with them stores them and shows those.
int ShowSettings(const SceneOptions& options, unsigned card, const std::vector<std::string>& assignments);
int ShowRegisters(const SceneOptions& options, unsigned card);

// "0" to "65535", or "0%" to "100%". CommandError for anything else.
WORD ParseVolume(const std::string& text);

// The capture file of one of `count` devices: "out.wav" for one device, "out-3.wav" for device 3 of
// several.
std::string CapturePath(const std::string& path, unsigned device, size_t count);

}  // namespace kestvox
