#include "tests/support/driver_test.h"

#include <algorithm>

#include "tools/system/registry_value.h"

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

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
    test_system::ExpectUsage(usage_);
}

void DriverTest::StoreValue(const std::u16string& key, const WCHAR* name, const void* data, DWORD size,
                            DWORD type) {
    const auto* bytes = static_cast<const BYTE*>(data);
    EXPECT_EQ(kestvox::WriteRegistryValue(Wide(key), name, {type, {bytes, bytes + size}}), ERROR_SUCCESS);
}

void DriverTest::StoreText(unsigned card, const WCHAR* name, const std::u16string& text) {
    StoreBinary(card, name, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(char16_t)), REG_SZ);
}

std::u16string DriverTest::DeviceName(UINT device) {
    WAVEOUTCAPSW output = {};
    WAVEINCAPSW input = {};
    waveOutGetDevCapsW(device, &output, sizeof output);
    waveInGetDevCapsW(device, &input, sizeof input);
    EXPECT_EQ(Utf16(output.szPname), Utf16(input.szPname));
    return Utf16(output.szPname);
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

Lines DriverTest::TraceText(std::initializer_list<std::string_view> without) {
    Lines lines;
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

std::array<DWORD, 8> DriverTest::MixerGains() {
    std::array<DWORD, 8> gains = {};
    for (unsigned input = 0; input < gains.size(); ++input) {
        gains[input] = simulator_->MixerGain(0, input);
    }
    return gains;
}

std::vector<DWORD> DriverTest::Events() {
    std::vector<DWORD> ids;
    for (const platform::EventRecord& event : test_system::EventLog()) {
        EXPECT_EQ(event.Source, u"KESTVOX.DLL");
        EXPECT_EQ(event.Type, EVENTLOG_WARNING_TYPE);
        EXPECT_EQ(event.Category, 0);
        ids.push_back(event.Id);
    }
    return ids;
}

void DriverTest::ExpectPlays(UINT device, const WaveFormat& format) {
    Cards().ForgetAudio();
    WavePlayer player(device, format);
    const std::vector<BYTE> data = Pattern(6000);
    EXPECT_EQ(player.Write(data), MMSYSERR_NOERROR);
    Cards().Advance(20 * Millisecond);
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(player.DoneCount(), 1u);
    EXPECT_TRUE(Cards().Played(device / 2, static_cast<Port>(device % 2)) == Sound(format, data)) << device;
}
