#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>

#include "tests/interleaving/worker.h"

namespace interleaving {

ThreadLook LookAt(unsigned long id) {
    std::ifstream status("/proc/self/task/" + std::to_string(id) + "/status");
    ThreadLook look{};
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("State:")) {
            look.Asleep = line.find('S', 6) != std::string::npos;
        } else if (const size_t colon = line.find("ctxt_switches:"); colon != std::string::npos) {
            look.Wakings += std::stoul(line.substr(colon + 14));
        }
    }
    return look;
}

unsigned long CurrentThreadNumber() {
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

}  // namespace interleaving
