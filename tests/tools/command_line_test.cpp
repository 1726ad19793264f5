// What the command refuses, and what it does besides playing and recording.
#include "platform/machine.h"
#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

using Words = std::vector<std::string>;

// $M is a machine of a name that no other test uses, removed at the end.
class CommandLine : public CommandTest {
protected:
    ~CommandLine() override { platform::RemoveMachine(machine_); }
    CommandResult Run(const std::string& words) const { return Shell("M=" + machine_ + "; $K " + words); }

    const std::string machine_ = "kestvox-test-" + std::to_string(platform::CurrentProcess().Id);
};

// One line on standard error that names what was wrong, status 2, nothing said and nothing left behind.
TEST_F(CommandLine, RefusesBadInputInOneLine) {
    Write("good.wav", NoiseFile(1000));
    Write("odd.wav", NoiseFile(1000, PcmFormat(12000, 2, 16)));
    Write("fast.wav", NoiseFile(1000, PcmFormat(48000, 2, 16)));
    Write("real.wav", NoiseFile(1000, TaggedFormat(3, 44100, 2, 32)));
    Write("law.wav", NoiseFile(1000, TaggedFormat(WAVE_FORMAT_ALAW, 44100, 2, 8)));
    Write("text.wav", "some text that is long enough for a header of a WAV file");
    const std::pair<const char*, const char*> cases[] = {
        {"pla", "no command 'pla'"},
        {"play", "FILE"},
        {"play ''", "FILE: an empty value"},
        {"play absent.wav", "absent.wav: No such file"},
        {"play .", "is a directory"},
        {"play text.wav", "text.wav: not a WAV file"},
        {"play odd.wav", "device 0: WAVERR_BADFORMAT (32)"},
        {"play odd.wav", "12000 Hz"},
        {"play real.wav", "32-bit floating point, stereo, 44100 Hz); at 44100 Hz it accepts"},
        {"play fast.wav good.wav --device 0,1", "another stream holds its clock at 48000 Hz"},
        {"play good.wav good.wav", "2 files for 1 device:"},
        {"play good.wav --nonsense", "--nonsense"},
        {"play good.wav --time slow", "slow"},
        {"play good.wav --buffers 0", "--buffers"},
        {"play good.wav --buffers 99999999999999999999", "--buffers: 99999999999999999999"},
        {"play good.wav --loops 0", "--loops"},
        {"play good.wav --cards 17", "--cards"},
        {"play good.wav --volume 101%", "volume 101%"},
        {"play good.wav --volume 65536", "volume 65536"},
        {"play good.wav --device 2", "device 2: MMSYSERR_BADDEVICEID (2)"},
        {"play good.wav --device 0,0", "device 0: MMSYSERR_ALLOCATED (4)"},
        {"play good.wav --device one", "--device"},
        {"play good.wav --device 4294967295", "--device: 4294967295"},
        {"play good.wav --device 0,1 --capture -", "-: cannot take what several devices play"},
        {"play good.wav --set Left24", "NAME=VALUE"},
        {"play good.wav --set 1:Left24=1", "there is no card 1"},
        {"play good.wav --set x:Left24=1", "'x' is not a card number"},
        {"play good.wav --follow 1=0", "there is no card 1"},
        {"play good.wav --follow 0=1", "there is no card 1"},
        {"play good.wav --follow 0=0", "two different card numbers"},
        {"play good.wav --follow 1", "two different card numbers"},
        {"play good.wav --cards 2 --follow 0=1 --follow 1=0", "in a circle"},
        {"play good.wav --fault nothing:1", "fault nothing:1: must be REQUEST:N"},
        {"play good.wav --fault START_TRANSFER", "must be REQUEST:N"},
        {"play good.wav --fault START_TRANSFER:0", "must be REQUEST:N"},
        {"play good.wav --fault START_TRANSFER:1x", "must be REQUEST:N"},
        {"play good.wav --fault GET_POSITION:1:late", "must be REQUEST:N"},
        {"play good.wav --fault completion:1:fail", "must be REQUEST:N"},
        {"play good.wav --fault completion:1:late=", "must be REQUEST:N"},
        {"play good.wav --fault completion:1:lost=5", "must be REQUEST:N"},
        {"play good.wav --machine a/b", "machine 'a/b'"},
        {"play good.wav --suspend-at -1", "--suspend-at"},
        {"play good.wav --suspend-at nan", "--suspend-at: nan"},
        {"play good.wav --capture absent/out.wav", "cannot write"},
        {"play good.wav --trace .", "cannot write"},
        {"play good.wav --trace ''", "--trace: an empty value"},
        {"play good.wav --trace --json", "'--json' is an option"},
        {"play good.wav --trace good.wav", "FILE and --trace name the same file"},
        {"play good.wav --report good.wav", "FILE and --report name the same file"},
        {"play good.wav --trace out.wav --capture out.wav", "--capture and --trace name the same file"},
        {"play good.wav --report a --trace a", "--trace and --report name the same file"},
        {"record", "FILE"},
        {"record absent/out.wav", "cannot write"},
        {"record out.wav --format s12", "--format"},
        {"record out.wav --channels 3", "device 0: WAVERR_BADFORMAT (32)"},
        {"record out.wav --rate 0", "--rate: 0"},
        {"record out.wav --rate 12000", "12000 Hz"},
        {"record out.wav --device 2", "device 2: MMSYSERR_BADDEVICEID (2)"},
        {"record out.wav --device 2 --dither 1", "there is no card 1"},
        {"record out.wav --dither 5", "--dither"},
        {"record out.wav --seconds 0", "--seconds: 0"},
        {"record out.wav --input tone:", "input tone:: must be tone:HZ"},
        {"record out.wav --input tone:0", "input tone:0"},
        {"record out.wav --input tone:inf", "input tone:inf"},
        {"record out.wav --input text.wav", "text.wav: not a WAV file"},
        {"record out.wav --input good.wav --rate 48000", "good.wav: has 44100 Hz, the recording 48000 Hz"},
        {"record out.wav --input law.wav", "law.wav: cannot be plugged in"},
        {"record out.wav --input cable:0a", "--machine names the machine"},
        {"record out.wav --input cable:0x --machine $M", "must be cable:OUTPUT"},
        {"record out.wav --input cable:5a --machine $M", "there is no card 5"},
        {"record out.wav --input cable:0a --machine $M --time stepped", "in real time only"},
        {"loopback law.wav", "device 0: WAVERR_BADFORMAT (32)"},
        {"loopback good.wav --out absent/out.wav", "cannot write"},
        {"settings Name=$(printf x%050d 0)", "longer than 50"},
        {"settings Master=$(printf x%0150d 0)", "longer than 150"},
        {"settings Master=16", "from 0 to 15"},
        {"settings Left24=2", "Left24=2: must be 0 (24-bit"},
        {"settings 'Left24=1 '", "must be"},
        {"settings Punchin=4294967297", "must be 0 (lock to playback) or 1 (punch-in)"},
        {"settings ClockSource=1", "97 (automatic)"},
        {"settings DitherADC=5", "4 (Type II shaped)"},
        {"settings Monitor=128,0,128,0,0,128,0", "eight gains"},
        {"settings Monitor=128,0,128,0,0,128,0,128,", "eight gains"},
        {"settings Monitor=128,0,128,0,0,128,0,129", "eight gains"},
        {"settings Left25=2", "'Left25'"},
        {"settings --card 1", "there is no card 1"},
        {"registers --card 1", "there is no card 1"},
        {"configure --cards 0", "--cards"},
        {"configure sheet", "sheet"},
        {"configure --json --step", "--step"},
        {"machine show absent", "there is no machine 'absent'"},
        {"machine list absent", "takes no name"},
        {"listen out.wav", "--machine names the machine"},
        {"listen out.wav --machine 'a b'", "a name has letters"},
    };
    for (const auto& [arguments, why] : cases) {
        SCOPED_TRACE(arguments);
        const CommandResult result = Run(arguments);
        ExpectOneLine(result, 2, why);
        EXPECT_EQ(result.Output, "");
        EXPECT_EQ(Shell("ls -A").Output, "fast.wav\ngood.wav\nlaw.wav\nodd.wav\nreal.wav\ntext.wav\n");
    }
    EXPECT_EQ(Read("good.wav"), NoiseFile(1000));
}

TEST_F(CommandLine, ListsEveryDeviceByTheNameOfItsCard) {
    const CommandResult result = Run("devices --cards 2 --set 1:Name=Annex");
    ASSERT_EQ(result.Status, 0) << result.Errors;
    for (const std::string direction : {"output ", "input "}) {
        EXPECT_EQ(result.Values(direction + "0"), Words{"Kestrelvox Analog"});
        EXPECT_EQ(result.Values(direction + "1"), Words{"Kestrelvox Digital"});
        EXPECT_EQ(result.Values(direction + "2"), Words{"Annex Analog"});
        EXPECT_EQ(result.Values(direction + "3"), Words{"Annex Digital"});
        EXPECT_EQ(result.Values(direction + "4"), Words{});
    }
    EXPECT_NE(result.Output.find("8000, 11025, 22050, 32000, 44100, 48000, 88200, 96000 Hz"),
              std::string::npos);
}

TEST_F(CommandLine, InstallsTheDriverAndTakesItOut) {
    for (int time = 1; time <= 2; ++time) {
        const CommandResult installed = Run("install --machine $M");
        ASSERT_EQ(installed.Status, 0) << installed.Errors;
        EXPECT_EQ(installed.Values("    Start"), Words{"REG_DWORD 1"});
        EXPECT_EQ(installed.Values("    ImagePath"),
                  Words{"REG_EXPAND_SZ \\SystemRoot\\System32\\drivers\\kestvox.sys"});
        EXPECT_EQ(installed.Values("    TypesSupported"), (Words{"REG_DWORD 7", "REG_DWORD 7"}));
        EXPECT_EQ(installed.Values("    wave"), Words{"REG_SZ kestvox.dll"}) << "time " << time;
        EXPECT_EQ(installed.Values("    kestvox.dll"), Words{"REG_SZ Kestrelvox"});
        EXPECT_EQ(installed.Values("restart-needed"), Words{"yes"});
    }
    const CommandResult removed = Run("remove --machine $M");
    EXPECT_EQ(removed.Values("    Start"), Words{"REG_DWORD 4"});
    EXPECT_EQ(removed.Values("    TypesSupported").size(), 2u) << "only the service is disabled";
    EXPECT_EQ(removed.Values("    wave"), Words{});
    EXPECT_EQ(removed.Values("    kestvox.dll"), Words{});
    EXPECT_EQ(Run("remove --machine $M").Errors, "kestvox: the driver is not installed\n");
}

TEST_F(CommandLine, KeepsSettingsAndRegistersOnANamedMachine) {
    const char* const show = "settings --machine $M";
    EXPECT_EQ(Run(show).Values("ClockSource"), Words{"97 (automatic), default"});

    const CommandResult change =
        Run("settings --machine $M 'Name=G\xC3\xA4nge \xF0\x9F\x8E\xB5' clocksource=0 "
            "Monitor=1,2,3,4,5,6,7,8");
    ASSERT_EQ(change.Status, 0) << change.Errors;
    EXPECT_EQ(change.Errors, "");
    EXPECT_EQ(change.Output,
              "Name: G\xC3\xA4nge \xF0\x9F\x8E\xB5\nClockSource: 0 (internal)\nMonitor: 1,2,3,4,5,6,7,8\n");
    Run("settings --machine $M 'Name=A longer name' Left24=7");
    const CommandResult shown = Run(show);
    EXPECT_EQ(shown.Values("Name"), Words{"G\xC3\xA4nge \xF0\x9F\x8E\xB5"})
        << "a refused command stored something";
    EXPECT_EQ(Run("devices --machine $M").Values("output 0"), Words{"G\xC3\xA4nge \xF0\x9F\x8E\xB5 Analog"});
    EXPECT_EQ(shown.Values("ClockSource"), Words{"0 (internal)"});
    EXPECT_EQ(shown.Values("Left24").at(0).substr(0, 2), "1 ");

    Write("in.wav", NoiseFile(100, PcmFormat(96000, 2, 16)));
    ASSERT_EQ(Run("play in.wav --machine $M --time stepped").Status, 0);
    const CommandResult registers = Run("registers --machine $M");
    EXPECT_EQ(registers.Status, 0);
    // Rate code 0 and the internal clock; link driver off.
    EXPECT_NE(registers.Output.find("card 32        00"), std::string::npos) << registers.Output;
    EXPECT_NE(registers.Output.find("analog out 0"), std::string::npos);

    const CommandResult machines = Run("machine show $M");
    EXPECT_EQ(machines.Values("machine"), Words{machine_});
    EXPECT_EQ(machines.Values("process"), Words{});
    EXPECT_FALSE(machines.Values("region").empty());
    const CommandResult gone = Run("machine remove $M");
    EXPECT_EQ(gone.Status, 0) << gone.Errors;
    EXPECT_EQ(Run("machine remove $M").Status, 2) << "it is gone";
}

}  // namespace
