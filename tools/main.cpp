// kestvox: plays, lists and looks into the cards through the wave calls of the system.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "tools/commands.h"
#include "tools/settings_table.h"

namespace kestvox {
namespace {

constexpr unsigned MostBuffers = 1000;
constexpr unsigned LongestBuffer = 10000;

struct CommandLine {
    PlayOptions Play;  // its Scene serves every command
    std::string Volume;
    std::string Time = "real";
    unsigned Card = 0;
    std::vector<std::string> Assignments;
};

void AddMachineOption(CLI::App& command, SceneOptions& scene) {
    command.add_option("--machine", scene.Machine,
                       "Machine to work on, shared by all processes that name it "
                       "(default: KESTVOX_MACHINE, or a machine of its own)");
}

void AddCardsOption(CLI::App& command, SceneOptions& scene) {
    command.add_option("--cards", scene.Cards, "Number of cards (default: those of the machine, or 1)")
        ->check(CLI::Range(1u, simulator::MaxCards));
}

// Takes one argument at a time, so that a file name may follow; may be given again and again.
template <typename T>
CLI::Option* AddRepeatable(CLI::App& command, const char* name, std::vector<T>& values, const char* help) {
    return command.add_option(name, values, help)->allow_extra_args(false);
}

void AddSceneOptions(CLI::App& command, SceneOptions& scene) {
    AddMachineOption(command, scene);
    AddCardsOption(command, scene);
    AddRepeatable(command, "--set", scene.Settings,
                  "[CARD:]NAME=VALUE: store a setting first; without CARD, on every card");
    AddRepeatable(command, "--follow", scene.Follows,
                  "B=A: card B takes its clock from card A (stores its Master and ClockSource)");
}

CLI::App* AddDevices(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("devices", "List the wave devices and what they accept");
    AddSceneOptions(*command, line.Play.Scene);
    return command;
}

CLI::App* AddPlay(CLI::App& program, CommandLine& line) {
    PlayOptions& play = line.Play;
    CLI::App* command = program.add_subcommand("play", "Play WAV files as they are, on one or more devices");
    command->add_option("FILE", play.Files, "WAV file: one for all devices, or one for each")->required();
    AddRepeatable(*command, "--device", play.Devices,
                  "D,...: devices to play on, all at once (default 0; card = D / 2, odd D is digital)")
        ->delimiter(',');
    AddSceneOptions(*command, play.Scene);
    command->add_option("--time", line.Time, "real, or stepped: as fast as it goes (default real)")
        ->check(CLI::IsMember({"real", "stepped"}));
    command->add_option("--buffers", play.Buffers, "Buffers for each device (default 8)")
        ->check(CLI::Range(1u, MostBuffers));
    command->add_option("--buffer-ms", play.BufferMilliseconds, "Length of a buffer (default 50)")
        ->check(CLI::Range(1u, LongestBuffer));
    command->add_option("--loops", play.Passes, "Play the whole file so many times, as one loop")
        ->check(CLI::Range(DWORD{1}, DWORD{0xFFFFFFFF}));
    command->add_option("--volume", line.Volume, "0 to 65535, or 0% to 100%");
    command->add_option("--capture", play.Capture,
                        "WAV file for what the output played (32-bit stereo); with several devices one "
                        "file each, OUT-<device>.wav for OUT.wav");
    command->add_option("--trace", play.Trace, "JSON file for every request, for a timeline viewer");
    AddRepeatable(*command, "--fault", play.Scene.Faults,
                  "REQUEST:N[:fail|pending|short] or completion:N:late[=US]|twice|lost: what the N-th one "
                  "(or 'all') does; REQUEST as in the trace, or 'any'");
    return command;
}

CLI::App* AddSettings(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("settings", "Show and change the stored settings of a card");
    AddMachineOption(*command, line.Play.Scene);
    command->add_option("--card", line.Card, "Number of the card (default 0)");
    command->add_option("NAME=VALUE", line.Assignments, "Settings to store");
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

CLI::App* AddRegisters(CLI::App& program, CommandLine& line) {
    CLI::App* command = program.add_subcommand("registers", "Show what a card was last told");
    AddMachineOption(*command, line.Play.Scene);
    command->add_option("--card", line.Card, "Number of the card (default 0)");
    return command;
}

// One line, whatever the text.
int Refuse(const char* why) noexcept {
    std::fputs("kestvox: ", stderr);
    for (; *why != '\0'; ++why) {
        std::fputc(*why == '\n' ? ' ' : *why, stderr);
    }
    std::fputc('\n', stderr);
    return ExitRefused;
}

int Run(int argc, char** argv) {
    CommandLine line;
    CLI::App program("Plays on, lists and looks into the Kestrelvox cards", "kestvox");
    program.require_subcommand(1);
    const CLI::App* devices = AddDevices(program, line);
    const CLI::App* play = AddPlay(program, line);
    const CLI::App* settings = AddSettings(program, line);
    AddRegisters(program, line);
    const auto isFirstWord = [&](const CLI::App* command) { return command->check_name(argv[1]); };
    if (argc > 1 && argv[1][0] != '-' && program.get_subcommands(isFirstWord).empty()) {
        return Refuse(("there is no command '" + std::string(argv[1]) + "' (try --help)").c_str());
    }
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return program.exit(help);
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    }

    if (devices->parsed()) {
        return ListDevices(line.Play.Scene);
    }
    if (play->parsed()) {
        line.Play.Scene.Time =
            line.Time == "stepped" ? simulator::TimeKind::Stepped : simulator::TimeKind::Real;
        if (!line.Volume.empty()) {
            line.Play.Volume = ParseVolume(line.Volume);
        }
        return Play(line.Play);
    }
    if (settings->parsed()) {
        return ShowSettings(line.Play.Scene, line.Card, line.Assignments);
    }
    return ShowRegisters(line.Play.Scene, line.Card);
}

}  // namespace
}  // namespace kestvox

int main(int argc, char** argv) {
    try {
        return kestvox::Run(argc, argv);
    } catch (const std::bad_alloc&) {
        return kestvox::Refuse("not enough memory");
    } catch (const std::exception& error) {
        return kestvox::Refuse(error.what());
    }
}
