#include "front/windows/sound_source.h"

#include <mmsystem.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "front/windows/system_handle.h"

namespace front {

namespace {

constexpr WCHAR DefaultSound[] = TEXT("SystemDefault");

// The system sounds that have a number.
struct NumberedSound {
    DWORD Number;
    LPCWSTR Name;
};
constexpr NumberedSound NumberedSounds[] = {
    {SND_ALIAS_SYSTEMASTERISK, TEXT("SystemAsterisk")},
    {SND_ALIAS_SYSTEMQUESTION, TEXT("SystemQuestion")},
    {SND_ALIAS_SYSTEMHAND, TEXT("SystemHand")},
    {SND_ALIAS_SYSTEMEXIT, TEXT("SystemExit")},
    {SND_ALIAS_SYSTEMSTART, TEXT("SystemStart")},
    {SND_ALIAS_SYSTEMWELCOME, TEXT("SystemWelcome")},
    {SND_ALIAS_SYSTEMEXCLAMATION, TEXT("SystemExclamation")},
    {SND_ALIAS_SYSTEMDEFAULT, DefaultSound},
};

bool IsInMemory(DWORD flags) {
    return Has(flags, SND_MEMORY) && !Has(flags, SND_RESOURCE);
}

// A name without an extension means a WAV file. It is searched for where the system looks for files.
std::optional<WaveSound> LoadFile(LPCWSTR name) {
    WCHAR path[MAX_PATH] = {};
    const DWORD length = SearchPathW(nullptr, name, TEXT(".wav"), MAX_PATH, path, nullptr);
    return length > 0 && length < MAX_PATH ? ReadSound(path) : std::nullopt;
}

std::optional<WaveSound> LoadFromResource(HMODULE module, LPCWSTR name) {
    const HRSRC resource = FindResourceW(module, name, TEXT("WAVE"));
    const HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
    const auto* const image = loaded ? static_cast<const BYTE*>(LockResource(loaded)) : nullptr;
    return image ? ParseWaveImage(image, SizeofResource(module, resource)) : std::nullopt;
}

// What the user has chosen for the event.
std::optional<WaveSound> LoadAlias(LPCWSTR name) {
    const std::wstring key =
        std::wstring(TEXT("AppEvents\\Schemes\\Apps\\.Default\\")) + name + TEXT("\\.Current");
    WCHAR file[MAX_PATH + 1] = {};
    WCHAR path[MAX_PATH + 1] = {};
    LONG size = MAX_PATH * sizeof(WCHAR);
    const bool chosen = RegQueryValueW(HKEY_CURRENT_USER, key.c_str(), file, &size) == ERROR_SUCCESS &&
                        file[0] != 0 && ExpandEnvironmentStringsW(file, path, MAX_PATH) <= MAX_PATH;
    return chosen ? LoadFile(path) : std::nullopt;
}

std::optional<WaveSound> LoadNumbered(DWORD number) {
    const auto* const found = std::ranges::find(NumberedSounds, number, &NumberedSound::Number);
    return found == std::end(NumberedSounds) ? std::nullopt : LoadAlias(found->Name);
}

std::optional<WaveSound> LoadNamed(LPCWSTR name, DWORD flags) {
    if (!IsText(name, flags)) {
        return LoadNumbered(static_cast<DWORD>(reinterpret_cast<DWORD_PTR>(name)));
    }
    std::optional<WaveSound> sound = Has(flags, SND_FILENAME) ? std::nullopt : LoadAlias(name);
    return sound ? sound : LoadFile(name);
}

}  // namespace

bool Has(DWORD flags, DWORD flag) {
    return (flags & flag) == flag;
}

bool IsText(LPCWSTR name, DWORD flags) {
    return !IsInMemory(flags) && !Has(flags, SND_ALIAS_ID) && HIWORD(name) != 0;
}

std::optional<WaveSound> ReadSound(LPCWSTR path) {
    const SystemHandle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD size = file ? GetFileSize(file, nullptr) : INVALID_FILE_SIZE;
    if (size == INVALID_FILE_SIZE) {
        return std::nullopt;
    }
    std::vector<BYTE> image(size);
    DWORD read = 0;
    const bool whole = ReadFile(file, image.data(), size, &read, nullptr) && read == size;
    return whole ? ParseWaveImage(image.data(), size) : std::nullopt;
}

std::optional<WaveSound> LoadSound(LPCWSTR name, HMODULE module, DWORD flags) {
    if (IsInMemory(flags)) {
        return ParseWaveImage(reinterpret_cast<const BYTE*>(name), UnknownSize);
    }
    if (Has(flags, SND_RESOURCE)) {
        return LoadFromResource(module, name);
    }
    std::optional<WaveSound> sound = LoadNamed(name, flags);
    return sound || Has(flags, SND_NODEFAULT) ? std::move(sound) : LoadAlias(DefaultSound);
}

}  // namespace front
