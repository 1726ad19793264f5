#include "tools/settings/settings_table.h"

#include <gtest/gtest.h>

#include <cstring>

#include "simulator/simulator.h"
#include "tests/support/registry.h"
#include "tools/command_error.h"

namespace {

using kestvox::CommandError;
using kestvox::FindSetting;
using kestvox::ParseSetting;

RegistryValue Parse(const char* name, const char* text) {
    return ParseSetting(FindSetting(name), text);
}

template <typename T>
RegistryValue Binary(const T& value) {
    RegistryValue stored{.Type = REG_BINARY, .Bytes = std::vector<uint8_t>(sizeof value)};
    std::memcpy(stored.Bytes.data(), &value, sizeof value);
    return stored;
}

RegistryValue Text(const std::u16string& text) {
    return TextValue(REG_SZ, text);
}

TEST(SettingsTable, StoresWhatTheDriverReads) {
    EXPECT_EQ(Parse("Name", "Studio"), Text(u"Studio"));
    EXPECT_EQ(Parse("name", "G\xC3\xA4nge \xF0\x9F\x8E\xB5"), Text(u"G\u00E4nge \U0001F3B5"));
    EXPECT_EQ(Parse("Master", ""), Text(u""));
    EXPECT_EQ(Parse("Master", "3"), Text(simulator::Simulator::RegistryPath(3)));
    EXPECT_EQ(Parse("Master", "SYSTEM\\Other"), Text(u"SYSTEM\\Other"));
    EXPECT_EQ(Parse("Left24", "0"), Binary(uint32_t{0}));
    EXPECT_EQ(Parse("CLOCKSOURCE", "97"), Binary(uint32_t{97}));

    const uint32_t block[17] = {68, 83, 0, 64, 19, 0, 72, 0, 82, 128, 0, 50, 1, 0, 77, 0, 123};
    EXPECT_EQ(Parse("Monitor", "128,0,50,1,0,77,0,123"), Binary(block));
}

TEST(SettingsTable, RefusesWhatASettingCannotHave) {
    const struct {
        const char* Name;
        std::string Value;
        const char* Why;
    } cases[] = {
        {"Name", std::string(51, 'x'), "longer than 50"},
        {"Master", std::string(151, 'x'), "longer than 150"},
        {"Master", "16", "from 0 to 15"},
        {"Left24", "2", "must be 0 (24-bit"},
        {"Left24", "", "must be"},
        {"Left24", "1 ", "must be"},
        {"Left24", "-1", "must be"},
        {"Punchin", "4294967297", "must be 0 (lock to playback) or 1 (punch-in)"},
        {"ClockSource", "1", "97 (automatic)"},
        {"DitherADC", "5", "4 (Type II shaped)"},
        {"Monitor", "128,0,128,0,0,128,0", "eight gains"},
        {"Monitor", "128,0,128,0,0,128,0,128,0", "eight gains"},
        {"Monitor", "128,0,128,0,0,128,0,128,", "eight gains"},
        {"Monitor", "128,0,128,0,0,128,0,129", "eight gains"},
        {"Monitor", "", "eight gains"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.Name) + "=" + c.Value);
        try {
            ParseSetting(FindSetting(c.Name), c.Value);
            ADD_FAILURE() << "was taken";
        } catch (const CommandError& error) {
            EXPECT_NE(std::string(error.what()).find(c.Why), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(FindSetting("Left25"), CommandError);
    EXPECT_THROW(FindSetting(""), CommandError);
    EXPECT_EQ(Parse("Name", std::string(50, 'x').c_str()), Text(std::u16string(50, u'x')));
}

}  // namespace
