// kestvox: plays, lists and looks into the cards through the wave calls of the system.
#include <CLI/CLI.hpp>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <set>
#include <sstream>
#include <string>

#include "kestvox_version.h"
#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/settings/settings_table.h"
#include "tools/system/interrupt.h"
#include "tools/system/message.h"
#include "tools/system/standard_streams.h"

namespace kestvox {
namespace {

constexpr unsigned MostBuffers = 1000;
constexpr unsigned LongestBuffer = 10000;
constexpr unsigned MostDither = 4;
constexpr double ShortestSound = 1e-6;  // seconds
constexpr double LongestSound = 100000;
constexpr DWORD HighestRate = 1000000;
constexpr unsigned MostChannels = 65535;
constexpr unsigned MostDevice = 2 * simulator::MaxCards - 1;

std::string StreamFooter() {
    return "Device D is on card D / 2: even ones are analog, odd ones digital.\n"
           "Without --machine, KESTVOX_MACHINE names the machine, or it is gone at the end.\n"
           "SPEC is " +
           simulator::FaultSyntax() + ".";
}

struct CommandLine {
    SceneOptions Scene;  // of every command
    StreamOptions Streams;
    PlayOptions Play;
    RecordOptions Record;
    LoopbackOptions Loopback;
    std::string Volume;
    std::string Time = "real";
    unsigned Card = 0;
    std::vector<std::string> Assignments;
    ListenOptions Listen;
    ConfigureOptions Configure;
    std::string MachineAction;
    std::string MachineName;
};

// The range stands in the error message; the help gives it in the option's own words. What is no number is in
// no range.
template <typename T>
CLI::Validator Within(T least, T most) {
    return CLI::Validator(
        [=](const std::string& text) {
            T value{};
            if (CLI::detail::lexical_cast(text, value) && value >= least && value <= most) {
                return std::string();
            }
            std::ostringstream message;
            message << text << " is not a number from " << least << " to " << most;
            return message.str();
        },
        "");
}

// Of every option: nothing is no value, and neither is the option that follows.
std::string RefuseValue(const std::string& text) {
    if (text.empty()) {
        return "an empty value is none";
    }
    const bool isOption = text.size() > 1 && text[0] == '-' && (text[1] == '-' || std::isalpha(text[1]) != 0);
    return isOption ? "'" + text + "' is an option and no value; a file of that name is ./" + text : "";
}

void RefuseOddValues(CLI::App& command) {
    for (CLI::Option* option : command.get_options()) {
        if (option->get_items_expected_max() > 0 && !option->get_positional()) {
            option->check(CLI::Validator(RefuseValue, ""));
        } else if (option->get_positional()) {
            option->check(CLI::Validator(
                [](const std::string& text) { return text.empty() ? RefuseValue(text) : std::string(); },
                ""));
        }
    }
}

void AddMachineOption(CLI::App& command, SceneOptions& scene) {
    command.add_option("--machine", scene.Machine, "Work on this machine, shared by all that name it")
        ->type_name("NAME");
}

void AddCardOption(CLI::App& command, unsigned& card) {
    command.add_option("--card", card, "Number of the card (default 0)")->type_name("N");
}

// Takes one argument at a time, so that a file name may follow; may be given again and again.
template <typename T>
CLI::Option* AddRepeatable(CLI::App& command, const char* name, std::vector<T>& values, const char* help) {
    return command.add_option(name, values, help)->allow_extra_args(false);
}

void AddSceneOptions(CLI::App& command, SceneOptions& scene) {
    AddMachineOption(command, scene);
    command.add_option("--cards", scene.Cards, "Number of cards, 1 to 16 (default: as there are, or 1)")
        ->type_name("N")
        ->check(Within(1u, simulator::MaxCards));
    AddRepeatable(command, "--set", scene.Settings, "Store a setting first, of one card or of every card")
        ->type_name("[CARD:]NAME=VALUE");
    AddRepeatable(command, "--follow", scene.Follows, "Card B takes its clock from card A")->type_name("B=A");
}

// What play, record and loopback have in common.
void AddStreamOptions(CLI::App& command, CommandLine& line) {
    AddSceneOptions(command, line.Scene);
    command
        .add_option("--setup", line.Streams.Setup, "Take the scene from a file; options given as well win")
        ->type_name("FILE");
    command.add_option("--time", line.Time, "In real time (default), or as fast as it goes")
        ->type_name("real|stepped")
        ->check(CLI::IsMember({"real", "stepped"}).description(""));
    command.add_option("--buffers", line.Streams.Buffers, "Buffers for each device, 1 to 1000 (default 8)")
        ->type_name("K")
        ->check(Within(1u, MostBuffers));
    command
        .add_option("--buffer-ms", line.Streams.BufferMilliseconds, "Their length, 1 to 10000 (default 50)")
        ->type_name("M")
        ->check(Within(1u, LongestBuffer));
    command
        .add_option("--trace", line.Streams.Trace, "Keep every request to the cards, for a timeline viewer")
        ->type_name("OUT.json");
    command.add_option("--report", line.Streams.Page, "Write a page about the run, for a browser")
        ->type_name("OUT.html");
    AddRepeatable(command, "--fault", line.Scene.Faults, "Make a request or a completion go wrong")
        ->type_name("SPEC");
    command.add_flag("--tolerate", line.Streams.Tolerate, "Losses are reported and do not fail the command");
    command.add_flag("--quiet", line.Streams.Quiet, "Show no progress");
    command.add_flag("--json", line.Streams.Json, "Report as one JSON object");
}

CLI::Option* AddDevice(CLI::App& command, unsigned& device, const char* help) {
    return command.add_option("--device", device, help)->type_name("D")->check(Within(0u, MostDevice));
}

void AddSuspendOption(CLI::App& command, StreamOptions& streams) {
    command
        .add_option("--suspend-at", streams.SuspendAt,
                    "Let the computer sleep and wake at that time of the sound")
        ->type_name("SECONDS")
        ->check(Within(0.0, LongestSound));
}

CLI::App* AddDevices(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("devices", "List the wave devices and what they accept");
    AddSceneOptions(*command, line.Scene);
    return command;
}

CLI::App* AddPlay(CLI::App& program, CommandLine& line) {
    PlayOptions& play = line.Play;
    CLI::App* command = program.add_subcommand("play", "Play WAV files as they are, on one or more devices");
    command->add_option("FILE", play.Files, "WAV file, one for all devices or one for each")
        ->required()
        ->type_name("");
    AddRepeatable(*command, "--device", play.Devices, "Devices to play on, all at once (default 0)")
        ->type_name("D,...")
        ->delimiter(',')
        ->check(Within(0u, MostDevice));
    AddStreamOptions(*command, line);
    AddSuspendOption(*command, line.Streams);
    command->add_option("--loops", play.Passes, "Play the whole file L times, as one loop")
        ->type_name("L")
        ->check(Within(DWORD{1}, DWORD{0xFFFFFFFF}));
    command->add_option("--volume", line.Volume, "0 to 65535, or 0% to 100%")->type_name("V");
    command->add_option("--capture", play.Capture, "Keep what the output played, as 32-bit stereo WAV")
        ->type_name("OUT.wav");
    command->footer("With several devices, what device 2 played is in OUT-2.wav.\n" + StreamFooter());
    return command;
}

CLI::App* AddRecord(CLI::App& program, CommandLine& line) {
    RecordOptions& record = line.Record;
    CLI::App* command = program.add_subcommand("record", "Record what is plugged into a device's input");
    command->add_option("FILE", record.File, "WAV file to write")->required()->type_name("");
    AddDevice(*command, record.Device, "Device to record from (default 0)");
    command->add_option("--rate", record.Rate, "Sample rate in Hz (default: that of IN.wav, or 44100)")
        ->type_name("R")
        ->check(Within(DWORD{1}, HighestRate));
    command->add_option("--channels", record.Channels, "1 or 2 (default: as IN.wav, or 2)")
        ->type_name("C")
        ->check(Within(1u, MostChannels));
    const std::vector<std::string> formats = RecordFormats();
    command->add_option("--format", record.Format, "Sample format (default s16)")
        ->type_name(CLI::detail::join(formats, "|"))
        ->check(CLI::IsMember(formats).description(""));
    command->add_option("--seconds", record.Seconds, "How long (default: as long as IN.wav, or 5)")
        ->type_name("S")
        ->check(Within(ShortestSound, LongestSound));
    command->add_option("--input", record.Input, "What is plugged in (default silence)")
        ->type_name("IN.wav|tone:HZ|cable:OUTPUT|silence");
    command->add_option("--dither", record.Dither, "Store the card's DitherADC setting first, 0 to 4")
        ->type_name("TYPE")
        ->check(Within(0u, MostDither));
    AddStreamOptions(*command, line);
    AddSuspendOption(*command, line.Streams);
    command->footer(StreamFooter());
    return command;
}

CLI::App* AddLoopback(CLI::App& program, CommandLine& line) {
    LoopbackOptions& loopback = line.Loopback;
    CLI::App* command = program.add_subcommand(
        "loopback", "Play a WAV file into the same port's input and compare what comes back");
    command->add_option("FILE", loopback.File, "WAV file, of a format that can be recorded")
        ->required()
        ->type_name("");
    AddDevice(*command, loopback.Device, "Device to play on and record from (default 0)");
    command->add_option("--out", loopback.Out, "Keep what came back")->type_name("OUT.wav");
    command->add_flag("--lock", loopback.Lock, "Lock the recording to the playback: both start on one frame");
    AddStreamOptions(*command, line);
    command->footer(StreamFooter());
    return command;
}

CLI::App* AddListen(CLI::App& program, CommandLine& line) {
    ListenOptions& listen = line.Listen;
    CLI::App* command =
        program.add_subcommand("listen", "Keep what another program on a named machine plays");
    command->add_option("FILE", listen.File, "WAV file to write: 32-bit, stereo")->required()->type_name("");
    AddDevice(*command, listen.Device, "Output device to listen to (default 0)");
    command->add_option("--seconds", listen.Seconds, "How long (default: until that device is closed)")
        ->type_name("S")
        ->check(Within(ShortestSound, LongestSound));
    AddSceneOptions(*command, line.Scene);
    return command;
}

CLI::App* AddSettings(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("settings", "Show and change the stored settings of a card");
    AddMachineOption(*command, line.Scene);
    AddCardOption(*command, line.Card);
    command->add_option("NAME=VALUE", line.Assignments, "Settings to store")->type_name("");
    std::string footer = "Settings:\n";
    for (const Setting& setting : AllSettings()) {
        footer += "  " + std::string(setting.Name) + ": " + setting.Purpose + "\n";
        for (const SettingCode& code : setting.Codes) {
            footer += "      " + std::to_string(code.Value) + "  " + code.Meaning + "\n";
        }
    }
    command->footer(footer);
    return command;
}

CLI::App* AddConfigure(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand(
        "configure", "Show the configuration sheet; where there is no screen, print what is on it");
    AddSceneOptions(*command, line.Scene);
    command->add_flag("--text", line.Configure.Text, "Print each page's controls and their state");
    CLI::Option* step =
        command->add_flag("--step", line.Configure.Step, "The same, waiting for Enter after each page");
    command->add_flag("--json", line.Configure.Json, "The same as a JSON list of the pages")->excludes(step);
    return command;
}

CLI::App* AddRegisters(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("registers", "Show what a card was last told");
    AddMachineOption(*command, line.Scene);
    AddCardOption(*command, line.Card);
    return command;
}

CLI::App* AddMachine(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand(
        "machine", "List the named machines, show one, or remove one that nobody uses");
    command->add_option("ACTION", line.MachineAction, "list, show or remove")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"list", "show", "remove"}).description(""));
    command->add_option("NAME", line.MachineName, "The machine to show or to remove")->type_name("");
    return command;
}

CLI::App* AddInstall(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("install", "Set the driver up, as the control panel does");
    AddMachineOption(*command, line.Scene);
    return command;
}

CLI::App* AddRemove(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("remove", "Take the driver out of the system again");
    AddMachineOption(*command, line.Scene);
    return command;
}

// A line of the setup file is taken as the option of its name.
void TakeAsOption(CLI::App& command, const simulator::SetupLine& setup,
                  const std::vector<std::string>& values) {
    CLI::Option* const option = command.get_option_no_throw("--" + setup.Key);
    if (!option) {
        throw CommandError(setup.Place + ": " + command.get_name() + " cannot do this: " + setup.Key);
    }
    try {
        for (const std::string& value : values) {
            option->add_result(value);
        }
        option->run_callback();
    } catch (const CLI::ParseError& error) {
        throw CommandError(setup.Place + ": " + error.what());
    }
}

void TakeSetupLine(CLI::App& command, CommandLine& line, const simulator::SetupLine& setup) {
    const auto append = [](auto& list, auto more) { list.insert(list.end(), more.begin(), more.end()); };
    if (setup.Key == "input") {
        append(line.Scene.Inputs, ParseInputs(setup));
    } else if (setup.Key == "cable") {
        append(line.Scene.Cables, ParseCables(setup));
    } else if (setup.Key == "capture") {
        line.Streams.CapturePattern = ParseCapturePattern(setup);
    } else {
        TakeAsOption(command, setup, setup.Key == "fault" ? ParseFaults(setup) : std::vector{setup.Value});
    }
}

// What is given as an option wins, and so does the environment's machine.
void TakeSetup(CLI::App& command, CommandLine& line) {
    std::set<std::string> given;
    for (const CLI::Option* option : command.get_options()) {
        if (option->count() > 0) {
            given.insert(option->get_single_name());
        }
    }
    if (const char* const machine = std::getenv("KESTVOX_MACHINE"); machine && *machine) {
        given.insert("machine");
    }
    given.erase("input");  // it is of one device, and the setup's are of all
    for (const simulator::SetupLine& setup : ReadSetupFile(line.Streams.Setup)) {
        if (!given.contains(setup.Key)) {
            TakeSetupLine(command, line, setup);
        }
    }
}

int Refuse(const std::string& why) noexcept {
    PrintProblem(why);
    return ExitRefused;
}

int Run(int argc, char** argv) {
    CommandLine line;
    CLI::App program("Plays on, lists and looks into the Kestrelvox cards", "kestvox");
    program.require_subcommand(1);
    program.set_version_flag("--version", "kestvox " KESTVOX_VERSION_TEXT);
    // A word that begins with a slash is a file name, on Windows, too.
    program.allow_windows_style_options(false);
    const CLI::App* devices = AddDevices(program, line);
    const CLI::App* configure = AddConfigure(program, line);
    const CLI::App* play = AddPlay(program, line);
    const CLI::App* record = AddRecord(program, line);
    const CLI::App* loopback = AddLoopback(program, line);
    const CLI::App* listen = AddListen(program, line);
    const CLI::App* settings = AddSettings(program, line);
    const CLI::App* install = AddInstall(program, line);
    const CLI::App* remove = AddRemove(program, line);
    AddRegisters(program, line);
    const CLI::App* machine = AddMachine(program, line);
    const auto isFirstWord = [&](const CLI::App* command) { return command->check_name(argv[1]); };
    if (argc > 1 && argv[1][0] != '-' && program.get_subcommands(isFirstWord).empty()) {
        return Refuse(("there is no command '" + std::string(argv[1]) + "' (try --help)"));
    }
    for (CLI::App* command : program.get_subcommands({})) {
        RefuseOddValues(*command);
    }
    if (argc == 1) {
        std::fputs(program.help().c_str(), stdout);
        return ExitSuccess;
    }
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return program.exit(help);
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    }

    if (!line.Streams.Setup.empty()) {
        TakeSetup(*program.get_subcommands().front(), line);
    }
    if (devices->parsed()) {
        return ListDevices(line.Scene);
    }
    if (configure->parsed()) {
        line.Configure.Scene = line.Scene;
        return Configure(line.Configure);
    }
    if (listen->parsed()) {
        line.Listen.Scene = line.Scene;
        return Listen(line.Listen);
    }
    line.Streams.Scene = line.Scene;
    line.Streams.Scene.Time =
        line.Time == "stepped" ? simulator::TimeKind::Stepped : simulator::TimeKind::Real;
    if (play->parsed()) {
        static_cast<StreamOptions&>(line.Play) = line.Streams;
        if (!line.Volume.empty()) {
            line.Play.Volume = ParseVolume(line.Volume);
        }
        return Play(line.Play);
    }
    if (record->parsed()) {
        static_cast<StreamOptions&>(line.Record) = line.Streams;
        return Record(line.Record);
    }
    if (loopback->parsed()) {
        static_cast<StreamOptions&>(line.Loopback) = line.Streams;
        return Loopback(line.Loopback);
    }
    if (settings->parsed()) {
        return StoreAndShowSettings(line.Scene, line.Card, line.Assignments);
    }
    if (install->parsed()) {
        return InstallDriver(line.Scene.Machine);
    }
    if (machine->parsed()) {
        return ManageMachines(line.MachineAction, line.MachineName);
    }
    if (remove->parsed()) {
        return RemoveDriver(line.Scene.Machine);
    }
    return ShowRegisters(line.Scene, line.Card);
}

// What was said may have gone nowhere.
int AllIsWritten(int status) {
    const bool failed = std::ferror(stdout) != 0;
    errno = EIO;
    if (std::fflush(stdout) == 0 && !failed) {
        return status;
    }
    PrintProblem(std::string("standard output: cannot write: ") + std::strerror(errno));
    return status == ExitSuccess ? ExitFailed : status;
}

}  // namespace
}  // namespace kestvox

int main(int argc, char** argv) {
    kestvox::OccupyStandardStreams();
    try {
        return kestvox::AllIsWritten(kestvox::Run(argc, argv));
    } catch (const std::bad_alloc&) {
        return kestvox::Refuse("not enough memory");
    } catch (const std::exception& error) {
        // A call that a signal has ended has failed for no other reason.
        return kestvox::IsInterrupted() ? kestvox::InterruptStatus() : kestvox::Refuse(error.what());
    }
}
