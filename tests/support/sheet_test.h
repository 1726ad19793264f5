// The configuration sheet of a fresh machine's cards, and what the user's choices come to.
#pragma once

#include <cstring>
#include <optional>
#include <tuple>

#include "tests/support/driver_test.h"
#include "tests/support/registry.h"
#include "tests/support/sheet.h"

class SheetTest : public DriverTest {
protected:
    using DriverTest::DriverTest;

    // A, B and so on.
    void NameCards() {
        for (unsigned card = 0; card < Cards().CardCount(); ++card) {
            StoreText(card, TEXT("Name"), std::u16string(1, static_cast<char16_t>(u'A' + card)));
        }
    }

    // Settings that are to be found must be stored before the first call.
    const DriverLibrary& Library() {
        if (!library_) {
            library_.emplace();
        }
        return *library_;
    }

    // A new sheet; one that is open is cancelled first.
    Sheet& Open() {
        sheet_.reset();
        sheet_.emplace(Library());
        return *sheet_;
    }

    Sheet& Shown() { return *sheet_; }

    // The driver reads what is stored anew.
    void Reload() {
        sheet_.reset();
        library_.reset();
        UnloadDriver();
    }

    // Of what all cards share.
    static constexpr const char16_t* CommonKey =
        u"Software\\Zephyr Harmonic Works\\Kestrelvox\\Configuration";

    static std::optional<DWORD> StoredBufferSize(const std::u16string& name) {
        return NumberIn(ReadRegistry(CommonKey, name));
    }

    // Nothing when it is not stored, or not as a number in four bytes.
    static std::optional<DWORD> StoredNumber(const std::u16string& name, unsigned card = 0) {
        return NumberIn(ReadRegistry(ConfigKey(card), name));
    }

    // Zeros when nothing is saved.
    static Monitor StoredMonitor() {
        Monitor monitor = {};
        const std::optional<RegistryValue> block = ReadRegistry(ConfigKey(), u"Monitor");
        if (block && block->Bytes.size() == sizeof monitor) {
            memcpy(&monitor, block->Bytes.data(), sizeof monitor);
        }
        return monitor;
    }

    // The calls of WinHelpW: file, command and number of each.
    using HelpCall = std::tuple<std::u16string, UINT, ULONG_PTR>;
    static std::vector<HelpCall> HelpShown() {
        std::vector<HelpCall> shown;
        for (const platform::HelpRequest& request : test_system::HelpRequests()) {
            shown.emplace_back(request.File, request.Command, request.Data);
        }
        return shown;
    }

private:
    static std::optional<DWORD> NumberIn(const std::optional<RegistryValue>& value) {
        if (!value || value->Type != REG_BINARY || value->Bytes.size() != sizeof(DWORD)) {
            return std::nullopt;
        }
        return *reinterpret_cast<const DWORD*>(value->Bytes.data());
    }

    std::optional<DriverLibrary> library_;
    std::optional<Sheet> sheet_;
};
