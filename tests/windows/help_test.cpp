// The help file in the system's own viewer: every topic, by the number with which the sheet asks for it.
#include <algorithm>
#include <filesystem>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

constexpr WCHAR File[] = TEXT("kestvox.hlp");

// A window of the viewer shows its text in a control of this class, one for each window.
BOOL CALLBACK AddText(HWND window, LPARAM texts) {
    if (kestvox::WindowClass(window).starts_with(TEXT("RichEdit")) && IsWindowVisible(window)) {
        WCHAR text[1024] = {};
        DWORD_PTR length = 0;
        SendMessageTimeoutW(window, WM_GETTEXT, 1024, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 5000,
                            &length);
        reinterpret_cast<std::vector<std::u16string>*>(texts)->push_back(Utf16(text));
    }
    return TRUE;
}

BOOL CALLBACK AddTextsOf(HWND window, LPARAM texts) {
    EnumChildWindows(window, AddText, texts);
    return TRUE;
}

bool IsShown(const std::u16string& title, const std::u16string& part) {
    std::vector<std::u16string> texts;
    EnumWindows(AddTextsOf, reinterpret_cast<LPARAM>(&texts));
    return std::ranges::any_of(texts, [&](const std::u16string& text) {
        return text.starts_with(title) && text.find(part) != text.npos;
    });
}

class HelpFile : public SheetTest {
protected:
    // The viewer looks for the file in the folder in which it is started.
    HelpFile() {
        WCHAR program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::filesystem::current_path(std::filesystem::path(program).parent_path());
        test_system::OpenHelp(true);
    }
    ~HelpFile() override {
        test_system::OpenHelp(false);
        std::filesystem::current_path(folder_);
    }

private:
    const std::filesystem::path folder_ = std::filesystem::current_path();
};

TEST_F(HelpFile, EveryTopicIsShownByItsNumber) {
    const struct {
        DWORD Number;
        const char16_t* Title;
        const char16_t* Part;
    } topics[] = {
        {HELP_PAGE_VERSION, u"Version", u"serial number"},
        {HELP_PAGE_MONITOR, u"Monitor", u"Sliders of the mixers"},
        {HELP_PAGE_BUFFER_SIZES, u"ASIO + EASI", u"EASI Buffer Size"},
        {HELP_PAGE_CONFIGURATION, u"Configuration", u"Kestrelvox name"},
        {HELP_PAGE_CLOCKS, u"Clocks + Sync", u"Tree of the cards"},
        {HELP_NAME, u"Kestrelvox name", u"Range: Up to 50 characters"},
        {HELP_24_BIT_MODE, u"24-bit data mode", u"Range: "},
        {HELP_CLOCK_TREE, u"Tree of the cards", u"Range: "},
        {HELP_MIXER, u"Sliders of the mixers", u"-42.0 dB"},
        {HELP_CHANNEL_STATUS, u"Professional mode, Consumer mode", u"Range: "},
        {HELP_COPY_PROTECT, u"Copy protect", u"Range: "},
        {HELP_NON_AUDIO, u"Non-audio", u"Range: "},
        {HELP_PREEMPHASIS, u"Pre-emphasis", u"50/15 \u00B5s"},
        {HELP_RECORD_MODE, u"Record mode", u"Range: "},
        {HELP_CHECK_CLOCKS, u"Enable clock master", u"Range: "},
        {HELP_ADVANCED_MONITORING, u"Enable advanced monitoring", u"Range: "},
        {HELP_DITHER, u"Analog Input Dithering", u"type II shaped"},
        {HELP_ASIO_BUFFER, u"ASIO Buffer Size", u"4 to 1000 ms"},
        {HELP_EASI_BUFFER, u"EASI Buffer Size", u"4 to 1000 ms"},
    };
    for (const auto& topic : topics) {
        WinHelpW(nullptr, File, HELP_CONTEXT, topic.Number);
        ASSERT_TRUE(ComesTrue([&] { return IsShown(topic.Title, topic.Part); }))
            << testing::PrintToString(topic.Title);
    }
    WinHelpW(nullptr, File, HELP_QUIT, 0);
}

}  // namespace
