// `kestvox configure` where there is no screen: the sheet as text.
#include "tests/processes/companion.h"
#include "tests/support/wave_player.h"
#include "tests/tools/command_test.h"

namespace {

using ConfigureCommand = CommandTest;

void ExpectParts(const std::string& text, std::initializer_list<const char*> parts) {
    for (const char* part : parts) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " is not in\n" << text;
    }
}

TEST_F(ConfigureCommand, PrintsEveryKindOfControlWithItsState) {
    const CommandResult result = Shell(
        "$K configure --cards 2 --follow 1=0 --set 0:Professional=0 --set 0:DitherADC=3 "
        "--set 0:ClockSource=64 --set 1:Name=Booth --set 0:AdvancedMonitoring=1 "
        "--set 0:Monitor=128,0,50,1,0,77,0,123");
    EXPECT_EQ(result.Status, 0) << result.Errors;
    ExpectParts(
        result.Output,
        {
            "Configuration: 'Kestrelvox'\n        group    'Kestrelvox name'\n  1002  edit     "
            "'Kestrelvox'\n",
            "  1024  radio    (*) 'Consumer mode'\n  1025  check    [ ] 'Copy protect'\n",
            "  1047  list     No dithering | Type I | Type I Shaped | *Type II | Type II Shaped\n",
            "  1035  slider   64 of 18 to 83\n  1036  value    '-8.1 dB'\n",
            "  1037  slider   19 of 18 to 83\n",
            "  1041  slider   72 of 18 to 83\n",
            "\nMonitor: 'Booth'\n        group    'Analog Output Mixer'\n        label    'Analog Input'\n",
            "  1037  slider   18 of 18 to 83  (disabled)\n  1038  value    '-INF dB'  (disabled)\n",
            "\nVersion: 'Booth'\n        picture\n",
            "  1001  tree\n               Sample Clock\n                 Kestrelvox (digital input clock)\n"
            "                   Booth\n",
            "  1051  value    '80 ms'\n",
        });
}

TEST_F(ConfigureCommand, TellsCardsOfOneNameApart) {
    const std::string command =
        "$K configure --cards 4 --set 1:Name=B --follow 2=0 --set '3:Name=\"' --set 0:ClockSource=0";
    ExpectParts(
        Shell(command).Output,
        {"Configuration: 'Kestrelvox (card 0)'\n", "Version: 'Kestrelvox (card 2)'\n", "Monitor: 'B'\n",
         " Kestrelvox (card 0) (internal clock)\n                   Kestrelvox (card 2)\n"});
    ExpectParts(
        Shell(command + " --json | tee sheet.json").Output,
        {
            R"({"title": "Monitor: 'Kestrelvox (card 2)'", "controls": [{"kind": "group", )",
            R"json("text": "\" (automatic clock selection)", "items": [])json",
            R"({"kind": "radio", "number": 1004, "text": "Left", "checked": true, "enabled": true})",
            R"({"kind": "slider", "number": 1037, "position": 18, "lowest": 18, "highest": 83, "enabled": false})",
        });
    EXPECT_EQ(Shell("python3 -m json.tool sheet.json >/dev/null").Status, 0);
}

TEST_F(ConfigureCommand, LeavesWhatAProgramSetOnTheCard) {
    const SharedMachine machine;
    Program program(1);
    WavePlayer player(0, PcmFormat(44100, 2, 16));
    ASSERT_EQ(waveOutSetVolume(player.Handle(), 0x40004000), MMSYSERR_NOERROR);
    const unsigned before = program.Cards.MixerGain(0, 2);
    ASSERT_NE(before, 128u);
    const CommandResult result = Shell("$K configure --machine " + machine.Name());
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(program.Cards.MixerGain(0, 2), before);
}

}  // namespace
