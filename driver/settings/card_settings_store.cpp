#include "settings/card_settings_store.h"

#include <iterator>

#include "card/card_table.h"
#include "card/heap.h"
#include "card/layers_above.h"
#include "card/requests.h"
#include "settings/settings_key.h"

namespace kestvox {

namespace {

constexpr const WCHAR* DefaultName = TEXT("Kestrelvox");

// Analog input and playback to the analog output, digital to the digital one, at 0 dB.
constexpr MonitorBlock DefaultMonitor = {
    sizeof(MonitorBlock), {83, 0, 83, 0, 0, 83, 0, 83}, {128, 0, 128, 0, 0, 128, 0, 128}};

// The settings that are one word, in the order in which they are loaded.
struct WordSetting {
    const WCHAR* Name;
    SharedWord CardSettings::*Member;
    DWORD Default;
};

constexpr WordSetting WordSettings[] = {
    {TEXT("Left24"), &CardSettings::Left24, 1},
    {TEXT("AdvancedMonitoring"), &CardSettings::AdvancedMonitoring, 0},
    {TEXT("Punchin"), &CardSettings::Punchin, 1},
    {TEXT("DitherADC"), &CardSettings::DitherADC, 0},
    {TEXT("CheckClocks"), &CardSettings::CheckClocks, 1},
    {TEXT("Professional"), &CardSettings::Professional, 1},
    {TEXT("CopyProtect"), &CardSettings::CopyProtect, 0},
    {TEXT("NonAudio"), &CardSettings::NonAudio, 0},
    {TEXT("Preemphasis"), &CardSettings::Preemphasis, 0},
    {TEXT("ClockSource"), &CardSettings::ClockSource, AutomaticClock},
};

// The path of a card's device key below HKEY_LOCAL_MACHINE.
constexpr DWORD LongestDeviceKey = 256;  // terminator included
struct DeviceKeyPath {
    WCHAR Text[LongestDeviceKey];
};

// FALSE when the kernel driver does not tell.
BOOL ReadDeviceKeyPath(CardRecord& card, DeviceKeyPath& path) {
    path = {};
    if (!GetCardRegistryPath(card, path.Text, sizeof path.Text)) {
        return FALSE;
    }
    path.Text[LongestDeviceKey - 1] = 0;
    return TRUE;
}

// The settings are in the subkey "Config".
void SetConfigPath(SettingsKey& key, const DeviceKeyPath& deviceKey) {
    constexpr WCHAR Subkey[] = TEXT("\\Config");
    WCHAR path[LongestDeviceKey + std::size(Subkey)];
    lstrcpyW(path, deviceKey.Text);
    lstrcatW(path, Subkey);
    key.SetPath(path);
}

void ShowSettingsError(const WCHAR* text) {
    if (GetDesktopWindow() != nullptr) {
        MessageBoxW(nullptr, text, nullptr, MB_ICONHAND | MB_SYSTEMMODAL);
    }
}

// Leaves `target` as it is when the value is missing or of another type.
void LoadStringSetting(const SettingsKey& key, const WCHAR* name, WCHAR* target, int length) {
    WCHAR* stored = nullptr;
    if (key.QueryString(name, &stored)) {
        lstrcpynW(target, stored, length);
        FreeHeapArray(stored);
    }
}

void LoadMonitor(const SettingsKey& key, CardRecord& card) {
    MonitorBlock block = card.Settings.Monitor;
    block.BlockSize = 0xFFFFFFFF;
    if (!key.QueryBinary(TEXT("Monitor"), &block, sizeof block) || block.BlockSize != sizeof block) {
        block = DefaultMonitor;
    }
    card.Settings.Monitor = block;
    card.WorkingMonitor = block;
}

void LoadWords(const SettingsKey& key, CardRecord& card) {
    for (const WordSetting& setting : WordSettings) {
        SharedWord& member = card.Settings.*setting.Member;
        DWORD value = member;  // a stored value of fewer bytes replaces only the first of them
        member = key.QueryBinary(setting.Name, &value, sizeof value) ? value : setting.Default;
    }
}

void Replace(const SettingsKey& key, const WCHAR* name, const void* data, DWORD size, DWORD type) {
    key.DeleteValue(name);
    key.SetValue(name, data, size, type);
}

// Of a shared text, which another sheet may be changing.
template <int Length>
void ReplaceString(const SettingsKey& key, const WCHAR* name, const WCHAR (&shared)[Length]) {
    WCHAR text[Length];
    lstrcpynW(text, shared, Length);
    const DWORD length = static_cast<DWORD>(lstrlenW(text)) + 1;
    Replace(key, name, text, length * static_cast<DWORD>(sizeof(WCHAR)), REG_SZ);
}

// Cards whose device key could not be had, and that the user has not been told of.
unsigned UnreadCards = 0;
SharedWord UnsavedCards = 0;  // a bit for each, by its place in the table; sheets of several threads save

DWORD BitOf(const CardRecord& card) {
    return DWORD{1} << (&card - FirstCard());
}

// The buffer has room for a line for each card.
void AppendNames(DWORD cards, WCHAR* text) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if ((cards & BitOf(*card)) != 0) {
            WCHAR name[NameLength];
            lstrcpynW(name, card->Name, NameLength);
            lstrcatW(text, TEXT("\n"));
            lstrcatW(text, name);
        }
    }
}

}  // namespace

void LoadCardSettings(CardRecord& card) {
    SettingsKey key(HKEY_LOCAL_MACHINE);
    lstrcpynW(card.Name, DefaultName, NameLength);
    card.Settings.Master[0] = 0;
    DeviceKeyPath path;
    if (!ReadDeviceKeyPath(card, path)) {
        ++UnreadCards;
        return;
    }
    lstrcpynW(card.RegistryPath, path.Text, PathLength);
    SetConfigPath(key, path);
    LoadStringSetting(key, TEXT("Name"), card.Name, NameLength);
    lstrcpynW(card.WorkingName, card.Name, NameLength);
    LoadStringSetting(key, TEXT("Master"), card.Settings.Master, PathLength);
    LoadMonitor(key, card);
    LoadWords(key, card);
    card.WorkingAdvancedMonitoring = card.Settings.AdvancedMonitoring.load();
    card.WorkingClockSource = card.Settings.ClockSource.load();
}

void ShowUnreadSettings() {
    for (; UnreadCards != 0; --UnreadCards) {
        ShowSettingsError(TEXT("Could not determine device's registry key"));
    }
}

BOOL SaveCardSettings(CardRecord& card) {
    SettingsKey key(HKEY_LOCAL_MACHINE);
    DeviceKeyPath path;
    if (!ReadDeviceKeyPath(card, path)) {
        UnsavedCards |= BitOf(card);
        return FALSE;
    }
    SetConfigPath(key, path);
    ReplaceString(key, TEXT("Name"), card.Name);
    ReplaceString(key, TEXT("Master"), card.Settings.Master);
    Replace(key, TEXT("Monitor"), &card.Settings.Monitor, sizeof(MonitorBlock), REG_BINARY);
    for (const WordSetting& setting : WordSettings) {
        const DWORD value = card.Settings.*setting.Member;
        Replace(key, setting.Name, &value, sizeof value, REG_BINARY);
    }
    return TRUE;
}

void ShowUnsavedSettings() {
    const DWORD unsaved = UnsavedCards.exchange(0);
    if (unsaved == 0) {
        return;
    }
    constexpr WCHAR Message[] = TEXT("Could not save configuration information in registry");
    WCHAR text[std::size(Message) + MaxCards * (NameLength + 1)];
    lstrcpyW(text, Message);
    if (NextCard(FirstCard()) != nullptr) {  // a card that is the only one needs no name
        AppendNames(unsaved, text);
    }
    ShowSettingsError(text);
}

}  // namespace kestvox
