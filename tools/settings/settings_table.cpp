#include "tools/settings/settings_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "simulator/simulator.h"
#include "tools/command_error.h"
#include "tools/system/wide_text.h"

namespace kestvox {
namespace {

constexpr size_t LongestName = 50;
constexpr size_t LongestPath = 150;

constexpr SettingCode Left24Codes[] = {
    {0, "24-bit samples right-justified in 32-bit slots"},
    {1, "24-bit samples left-justified in 32-bit slots"},
};
constexpr SettingCode PunchinCodes[] = {{0, "lock to playback"}, {1, "punch-in"}};
constexpr SettingCode ProfessionalCodes[] = {{0, "consumer channel status"},
                                             {1, "professional channel status"}};
constexpr SettingCode SwitchCodes[] = {{0, "off"}, {1, "on"}};
constexpr SettingCode ClockCodes[] = {
    {0, "internal"}, {32, "Tessalink master"}, {64, "digital input"}, {96, "PLL"}, {97, "automatic"},
};
constexpr SettingCode DitherCodes[] = {
    {0, "none"}, {1, "Type I"}, {2, "Type I shaped"}, {3, "Type II"}, {4, "Type II shaped"},
};

constexpr Setting Settings[] = {
    {"Name", SettingKind::Name, "Kestrelvox", "display name, at most 50 characters", {}},
    {"Master",
     SettingKind::Card,
     "",
     "card whose clock this card follows: its number or device key, or empty",
     {}},
    {"Left24", SettingKind::Code, "1", "place of 24-bit samples in 32-bit slots", Left24Codes},
    {"AdvancedMonitoring", SettingKind::Code, "0", "playback gains on the Monitor page", SwitchCodes},
    {"Punchin", SettingKind::Code, "1", "record mode", PunchinCodes},
    {"Professional", SettingKind::Code, "1", "format of the S/PDIF output", ProfessionalCodes},
    {"CopyProtect", SettingKind::Code, "0", "S/PDIF output forbids copying", SwitchCodes},
    {"NonAudio", SettingKind::Code, "0", "S/PDIF output is marked as data", SwitchCodes},
    {"Preemphasis", SettingKind::Code, "0", "S/PDIF output announces pre-emphasis", SwitchCodes},
    {"CheckClocks", SettingKind::Code, "1", "external clocks and incoming rates are checked", SwitchCodes},
    {"Monitor",
     SettingKind::Mixer,
     "128,0,128,0,0,128,0,128",
     "eight mixer gains from 0 to 128 (0 dB), commas between them; inputs 0 to 3 go to the\n"
     "      analog output, 4 to 7 to the digital one: analog in, digital in, analog play, digital play",
     {}},
    {"ClockSource", SettingKind::Code, "97", "source of the sample clock", ClockCodes},
    {"DitherADC", SettingKind::Code, "0", "dither of the analog input at 8 and 16 bits", DitherCodes},
};

constexpr uint32_t UnityGain = 128;

struct MixerBlock {
    uint32_t BlockSize;
    std::array<uint32_t, 8> SliderPosition;
    std::array<uint32_t, 8> Gain;
};
static_assert(sizeof(MixerBlock) == 68);

// Gains of the slider positions from 18, the lowest, to 83.
constexpr uint32_t LowestPosition = 18;
constexpr uint8_t SliderGains[] = {
    0,  1,  1,  1,  1,  1,  1,  2,  2,  2,  2,  3,  3,  4,  4,  4,  5,   5,   6,   7,   7,   8,
    9,  10, 11, 12, 13, 14, 15, 16, 17, 19, 20, 22, 23, 25, 27, 29, 30,  33,  35,  37,  39,  42,
    44, 47, 50, 53, 56, 59, 62, 65, 69, 72, 76, 80, 84, 88, 93, 97, 102, 107, 112, 117, 123, 128,
};
static_assert(std::size(SliderGains) == 83 - LowestPosition + 1);

// The position whose gain comes nearest; silence is position 0, as in a card that was never touched.
uint32_t NearestPosition(uint32_t gain) {
    if (gain == 0) {
        return 0;
    }
    const auto* nearest = std::ranges::min_element(SliderGains, {}, [gain](uint8_t candidate) {
        return candidate > gain ? candidate - gain : gain - candidate;
    });
    return LowestPosition + static_cast<uint32_t>(nearest - SliderGains);
}

bool SameInAnyCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

std::optional<uint32_t> ParseNumber(std::string_view text) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

template <typename T>
RegistryValue BinaryValue(const T& value) {
    RegistryValue stored{.Type = REG_BINARY, .Bytes = std::vector<uint8_t>(sizeof value)};
    std::memcpy(stored.Bytes.data(), &value, sizeof value);
    return stored;
}

[[noreturn]] void Refuse(const Setting& setting, std::string_view text, const std::string& why) {
    throw CommandError(std::string(setting.Name) + "=" + std::string(text) + ": " + why);
}

RegistryValue ParseText(const Setting& setting, std::string_view text, size_t longest) {
    const WideText wide = Widen(text);
    if (wide.size() > longest) {
        Refuse(setting, text, "longer than " + std::to_string(longest) + " characters");
    }
    return RegistryValue::Text(REG_SZ, wide);
}

RegistryValue ParseCard(const Setting& setting, std::string_view text) {
    const std::optional<uint32_t> number = ParseNumber(text);
    if (!number) {
        return ParseText(setting, text, LongestPath);
    }
    if (*number >= simulator::MaxCards) {
        Refuse(setting, text, "card numbers go from 0 to " + std::to_string(simulator::MaxCards - 1));
    }
    const std::u16string path = simulator::Simulator::RegistryPath(*number);
    return ParseText(setting, Narrow(WideText(path.begin(), path.end())), LongestPath);
}

RegistryValue ParseCode(const Setting& setting, std::string_view text) {
    const std::optional<uint32_t> value = ParseNumber(text);
    if (!value || std::ranges::find(setting.Codes, *value, &SettingCode::Value) == setting.Codes.end()) {
        std::string why = "must be";
        for (const SettingCode& code : setting.Codes) {
            why += &code == &setting.Codes.front() ? " " : &code == &setting.Codes.back() ? " or " : ", ";
            why += std::to_string(code.Value) + " (" + code.Meaning + ")";
        }
        Refuse(setting, text, why);
    }
    return BinaryValue(*value);
}

RegistryValue ParseMixer(const Setting& setting, std::string_view text) {
    MixerBlock block{.BlockSize = sizeof(MixerBlock), .SliderPosition = {}, .Gain = {}};
    std::string_view rest = text;
    for (size_t i = 0; i < block.Gain.size(); ++i) {
        const size_t comma = rest.find(',');
        const bool last = i + 1 == block.Gain.size();
        const std::optional<uint32_t> gain = ParseNumber(rest.substr(0, comma));
        if (!gain || *gain > UnityGain || last != (comma == std::string_view::npos)) {
            Refuse(setting, text, "must be eight gains from 0 to 128 with commas between them");
        }
        block.Gain[i] = *gain;
        block.SliderPosition[i] = NearestPosition(*gain);
        rest.remove_prefix(last ? rest.size() : comma + 1);
    }
    return BinaryValue(block);
}

std::optional<std::string> ShowName(const RegistryValue& value) {
    return value.Type == REG_SZ ? std::optional(Narrow(TextOf(value).substr(0, LongestName))) : std::nullopt;
}

std::optional<std::string> ShowCard(const RegistryValue& value) {
    if (value.Type != REG_SZ) {
        return std::nullopt;
    }
    const WideText path = TextOf(value).substr(0, LongestPath);
    if (path.empty()) {
        return "(follows no card)";
    }
    for (unsigned card = 0; card < simulator::MaxCards; ++card) {
        const std::u16string known = simulator::Simulator::RegistryPath(card);
        if (std::ranges::equal(path, known)) {
            return Narrow(path) + " (card " + std::to_string(card) + ")";
        }
    }
    return Narrow(path) + " (no card has this key)";
}

std::optional<std::string> ShowCode(const Setting& setting, const RegistryValue& value) {
    uint32_t number = 0;
    if (value.Type != REG_BINARY || value.Bytes.size() > sizeof number) {
        return std::nullopt;
    }
    std::memcpy(&number, value.Bytes.data(), value.Bytes.size());
    const auto code = std::ranges::find(setting.Codes, number, &SettingCode::Value);
    const char* meaning = code == setting.Codes.end() ? "no meaning" : code->Meaning;
    return std::to_string(number) + " (" + meaning + ")";
}

std::optional<std::string> ShowMixer(const RegistryValue& value) {
    MixerBlock block{};
    if (value.Type != REG_BINARY || value.Bytes.size() > sizeof block) {
        return std::nullopt;
    }
    std::memcpy(&block, value.Bytes.data(), value.Bytes.size());
    if (block.BlockSize != sizeof block) {
        return std::nullopt;
    }
    std::string text;
    for (const uint32_t gain : block.Gain) {
        text += (text.empty() ? "" : ",") + std::to_string(gain);
    }
    return text;
}

}  // namespace

std::span<const Setting> AllSettings() {
    return Settings;
}

const Setting& FindSetting(std::string_view name) {
    const auto* found = std::ranges::find_if(
        Settings, [name](const Setting& setting) { return SameInAnyCase(setting.Name, name); });
    if (found == std::end(Settings)) {
        std::string known;
        for (const Setting& setting : Settings) {
            known += (known.empty() ? "" : ", ") + std::string(setting.Name);
        }
        throw CommandError("no setting is called '" + std::string(name) + "' (there are " + known + ")");
    }
    return *found;
}

RegistryValue ParseSetting(const Setting& setting, std::string_view text) {
    switch (setting.Kind) {
    case SettingKind::Name:
        return ParseText(setting, text, LongestName);
    case SettingKind::Card:
        return ParseCard(setting, text);
    case SettingKind::Code:
        return ParseCode(setting, text);
    case SettingKind::Mixer:
        return ParseMixer(setting, text);
    }
    throw std::logic_error("a setting of no kind");
}

std::optional<std::string> ShowSetting(const Setting& setting, const RegistryValue& value) {
    switch (setting.Kind) {
    case SettingKind::Name:
        return ShowName(value);
    case SettingKind::Card:
        return ShowCard(value);
    case SettingKind::Code:
        return ShowCode(setting, value);
    case SettingKind::Mixer:
        return ShowMixer(value);
    }
    throw std::logic_error("a setting of no kind");
}

}  // namespace kestvox
