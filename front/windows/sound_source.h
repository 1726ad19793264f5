// Where PlaySound has its sounds from: a file, a program's memory, a module's resources, or the system's list
// of sounds for events.
#pragma once

#include <windows.h>

#include <optional>

#include "front/windows/wave_image.h"

namespace front {

// Some of PlaySound's flags are made of others' bits.
bool Has(DWORD flags, DWORD flag);

// Whether `name` is a text, and not the sound itself, nor the number of a resource or of a system sound.
bool IsText(LPCWSTR name, DWORD flags);

// The WAV file at that path.
std::optional<WaveSound> ReadSound(LPCWSTR path);

// A name that is not said to be a file's is looked up among the system's sounds first. What is not found
// becomes the default sound, where there is one and SND_NODEFAULT does not forbid it.
std::optional<WaveSound> LoadSound(LPCWSTR name, HMODULE module, DWORD flags);

}  // namespace front
