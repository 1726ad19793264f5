#include <pthread.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#include "platform/machine.h"

namespace platform {

namespace {

struct ProcessStatus {
    char State;
    int Threads;
    uint64_t StartTime;
};

// False when there is no such process.
bool ReadStatus(uint32_t id, ProcessStatus* status) {
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string line;
    if (!std::getline(file, line)) {
        return false;
    }
    // The program's name comes in parentheses, which it may itself contain.
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    fields >> status->State;  // field 3
    std::string skipped;
    for (int field = 4; field < 20; ++field) {
        fields >> skipped;
    }
    fields >> status->Threads >> skipped >> status->StartTime;  // fields 20 to 22
    return static_cast<bool>(fields);
}

ProcessIdentity ReadIdentity() {
    const auto id = static_cast<uint32_t>(getpid());
    ProcessStatus status{};
    ReadStatus(id, &status);
    return {id, status.StartTime};
}

ProcessIdentity& OwnIdentity() {
    static ProcessIdentity identity = [] {
        pthread_atfork(nullptr, nullptr, [] { OwnIdentity() = ReadIdentity(); });
        return ReadIdentity();
    }();
    return identity;
}

}  // namespace

ProcessIdentity CurrentProcess() {
    return OwnIdentity();
}

bool IsAlive(const ProcessIdentity& process) {
    ProcessStatus status{};
    if (process.Id == 0 || !ReadStatus(process.Id, &status) || status.StartTime != process.StartTime) {
        return false;
    }
    // Ended and not yet collected by its parent; with more threads, only its first thread has ended.
    const bool ended = status.State == 'Z' || status.State == 'X';
    return !ended || status.Threads > 1;
}

}  // namespace platform
