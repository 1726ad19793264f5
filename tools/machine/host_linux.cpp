#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "front/unload_driver.h"
#include "platform/machine.h"
#include "tools/machine/host.h"
#include "tools/machine/named_machines.h"

namespace kestvox {
namespace {

namespace fs = std::filesystem;

constexpr unsigned UsualWidth = 80;

std::string ReadWhole(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What is in a folder, as far as it can be told: another process may remove it meanwhile.
std::vector<fs::path> EntriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); entry != fs::directory_iterator();
         entry.increment(error)) {
        entries.push_back(entry->path());
    }
    return entries;
}

}  // namespace

bool JoinMachine(const std::string& name) {
    return platform::UseMachine(name);
}

bool MachineOutlivesProcess() {
    return !platform::MachineName().empty();
}

bool DeleteMachine(const std::string& name) {
    return platform::RemoveMachine(name);
}

// A process is on a machine when it has one of its regions in its memory.
std::vector<NamedMachine> ListNamedMachines() {
    std::vector<NamedMachine> machines;
    const fs::path folder = "/dev/shm/kestvox-" + std::to_string(getuid());
    for (const fs::path& path : EntriesOf(folder)) {
        NamedMachine machine{.Name = path.filename().string(), .Bytes = 0, .Regions = {}, .Users = {}};
        for (const fs::path& region : EntriesOf(path)) {
            std::error_code error;
            const uintmax_t size = fs::file_size(region, error);
            if (const std::string name = region.filename().string(); !error && !name.starts_with('.')) {
                machine.Bytes += size;
                machine.Regions.push_back(name);
            }
        }
        std::ranges::sort(machine.Regions);
        machines.push_back(std::move(machine));
    }
    std::ranges::sort(machines, {}, &NamedMachine::Name);
    for (const fs::path& process : EntriesOf("/proc")) {
        const std::string number = process.filename().string();
        if (number.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const std::string memory = ReadWhole(process / "maps");
        for (NamedMachine& machine : machines) {
            if (memory.find(folder.string() + "/" + machine.Name + "/") != std::string::npos) {
                std::string program = ReadWhole(process / "comm");
                program.erase(program.find_last_not_of('\n') + 1);
                machine.Users.push_back({static_cast<unsigned>(std::stoul(number)), program});
            }
        }
    }
    return machines;
}

bool MachineIsShared() {
    return MachineOutlivesProcess();
}

bool CardsAreSimulated() {
    return true;
}

void UnloadWaveDriver() {
    front::UnloadWaveDriver();
}

unsigned TerminalWidth() {
    winsize size{};
    if (isatty(STDERR_FILENO) != 1) {
        return 0;
    }
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : UsualWidth;
}

bool TerminalShowsColours() {
    const char* kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && kind && *kind != '\0' && std::string_view(kind) != "dumb";
}

bool HostShowsWindows() {
    return false;
}

}  // namespace kestvox
