// The commands of the program. Each prints its result on standard output, answers the exit status, and
// throws CommandError for what it cannot do.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/machine/scene.h"
#include "tools/streams/stream_options.h"

namespace kestvox {

inline constexpr int ExitSuccess = 0;
inline constexpr int ExitFailed = 1;   // something went wrong on the way
inline constexpr int ExitRefused = 2;  // CommandError

struct PlayOptions : StreamOptions {
    std::vector<std::string> Files;  // one for all devices, or one for each
    std::vector<unsigned> Devices = {0};
    DWORD Passes = 1;
    std::optional<WORD> Volume;
    std::string Capture;  // empty: none
};

struct RecordOptions : StreamOptions {
    std::string File;
    unsigned Device = 0;
    DWORD Rate = 0;                  // 0: that of the WAV file that is plugged in, or 44100
    unsigned Channels = 0;           // 0: as many as that file has, or 2
    std::string Format = "s16";      // one of RecordFormats
    std::optional<double> Seconds;   // nothing: as long as the WAV file that is plugged in, or 5
    std::string Input;               // "silence", "tone:HZ" or a WAV file; empty: as the scene has it
    std::optional<unsigned> Dither;  // stored as the card's setting
};

struct LoopbackOptions : StreamOptions {
    std::string File;
    unsigned Device = 0;
    std::string Out;    // empty: what comes back is compared and not kept
    bool Lock = false;  // lock the recording to the playback
};

struct ListenOptions {
    SceneOptions Scene;
    std::string File;
    unsigned Device = 0;
    std::optional<double> Seconds;  // nothing: until the output is closed
};

struct ConfigureOptions {
    SceneOptions Scene;
    bool Text = false;  // print the sheet's pages instead of showing them
    bool Step = false;  // the same, waiting for the Enter key after each
    bool Json = false;  // the same, as one JSON list
};

int ListDevices(const SceneOptions& options);
// Shows the configuration sheet, or what would be seen of it.
int Configure(const ConfigureOptions& options);
int Play(const PlayOptions& options);
int Record(const RecordOptions& options);
int Loopback(const LoopbackOptions& options);
// Keeps what another program on the machine plays on one output.
int Listen(const ListenOptions& options);
// Without assignments shows every setting; with them stores them and shows those.
int StoreAndShowSettings(const SceneOptions& options, unsigned card,
                         const std::vector<std::string>& assignments);
// What the system's set-up of drivers does: tells the driver, registers it with the multimedia system or
// takes it out, and shows what the registry then holds of it.
int InstallDriver(const std::string& machine);
int RemoveDriver(const std::string& machine);
// `action` is list, show or remove; the last two are of the named machine.
int ManageMachines(const std::string& action, const std::string& name);
int ShowRegisters(const SceneOptions& options, unsigned card);

// The names of the formats that record knows.
std::vector<std::string> RecordFormats();

// "0" to "65535", or "0%" to "100%". CommandError for anything else.
WORD ParseVolume(const std::string& text);

// The capture file of one of `count` devices: "out.wav" for one device, "out-3.wav" for device 3 of
// several. CommandError for several into one pipe.
std::string CapturePath(const std::string& path, unsigned device, size_t count);
// The capture file of a device where the path has a '*' for its name: "0a-1" for what device 0 plays.
std::string CapturePathOfPattern(const std::string& pattern, unsigned device);

}  // namespace kestvox
