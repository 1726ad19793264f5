#include "tools/settings/settings_table.h"

#include <gtest/gtest.h>

#include "simulator/simulator.h"
#include "tests/support/registry.h"

namespace {

RegistryValue Parse(const char* name, const char* text) {
    return kestvox::ParseSetting(kestvox::FindSetting(name), text);
}

RegistryValue Binary(const std::vector<uint32_t>& words) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(words.data());
    return {.Type = REG_BINARY, .Bytes = {bytes, bytes + 4 * words.size()}};
}

RegistryValue Text(const std::u16string& text) {
    return TextValue(REG_SZ, text);
}

TEST(SettingsTable, StoresWhatTheDriverReads) {
    EXPECT_EQ(Parse("Name", "Studio"), Text(u"Studio"));
    EXPECT_EQ(Parse("name", "G\xC3\xA4nge \xF0\x9F\x8E\xB5"), Text(u"G\u00E4nge \U0001F3B5"));
    EXPECT_EQ(Parse("Name", std::string(50, 'x').c_str()), Text(std::u16string(50, u'x')));
    EXPECT_EQ(Parse("Master", ""), Text(u""));
    EXPECT_EQ(Parse("Master", "3"), Text(simulator::Simulator::RegistryPath(3)));
    EXPECT_EQ(Parse("Master", "SYSTEM\\Other"), Text(u"SYSTEM\\Other"));
    EXPECT_EQ(Parse("Left24", "0"), Binary({0}));
    EXPECT_EQ(Parse("CLOCKSOURCE", "97"), Binary({97}));

    EXPECT_EQ(Parse("Monitor", "128,0,50,1,0,77,0,123"),
              Binary({68, 83, 0, 64, 19, 0, 72, 0, 82, 128, 0, 50, 1, 0, 77, 0, 123}));
}

}  // namespace
