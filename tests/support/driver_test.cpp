#include "tests/support/driver_test.h"

#include <algorithm>

#include "tests/support/system.h"
#include "tests/support/text.h"

namespace {

std::u16string ConfigKey(unsigned card) {
    return simulator::Simulator::RegistryPath(card) + u"\\Config";
}

}  // namespace

DriverTest::DriverTest(unsigned cards) {
    test_system::FreshMachine();
    simulator_ =
        std::make_unique<simulator::Simulator>(simulator::Simulator::Options{.Cards = cards, .Strict = true});
    simulator_->KeepAudio();
    simulator_->KeepTrace();
    usage_ = test_system::Usage();
}

DriverTest::~DriverTest() {
    test_system::ClearCallFailures();
    UnloadDriver();
    EXPECT_EQ(simulator_->OpenFiles(), 0u) << "device handles left open";
    EXPECT_EQ(test_system::Usage(), usage_);
}

void DriverTest::StoreBinary(unsigned card, const WCHAR* name, const void* data, DWORD size, DWORD type) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_LOCAL_MACHINE, Wide(ConfigKey(card)), &key), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
    RegCloseKey(key);
}

void DriverTest::StoreText(unsigned card, const WCHAR* name, const std::u16string& text) {
    StoreBinary(card, name, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(char16_t)), REG_SZ);
}

void DriverTest::Follow(unsigned follower, unsigned master) {
    StoreText(follower, TEXT("Master"), simulator::Simulator::RegistryPath(master));
    StoreSetting(follower, TEXT("ClockSource"), 32);
}

void DriverTest::LosePower() {
    for (unsigned card = 0; card < simulator_->CardCount(); ++card) {
        simulator_->PowerCycle(card);
    }
}

std::vector<std::string> DriverTest::TraceText(std::initializer_list<std::string_view> without) {
    std::vector<std::string> lines;
    for (const simulator::TraceEntry& entry : simulator_->Trace()) {
        const std::string text = entry.Text();
        const bool unwanted = std::any_of(without.begin(), without.end(), [&text](std::string_view start) {
            return text.starts_with(start);
        });
        if (!unwanted) {
            lines.push_back(text);
        }
    }
    return lines;
}
