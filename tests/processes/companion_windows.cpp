#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

#include "simulator/attach.h"
#include "tests/processes/companion.h"
#include "tests/support/system.h"

namespace {

// What this program is started with as a companion: the script's place in the program, the handles of the
// test's process and of what it hears and tells with, and the machine.
constexpr const char* Argument = "--companion=";
constexpr const char* ArgumentFormat = "%lx,%lx,%lx,%lx,";

ULONG_PTR Base() {
    return reinterpret_cast<ULONG_PTR>(GetModuleHandleW(nullptr));
}

struct Pipe {
    Pipe() { CreatePipe(&Read, &Write, nullptr, 0); }
    HANDLE Read = nullptr;
    HANDLE Write = nullptr;
};

ULONG Number(HANDLE handle) {
    return static_cast<ULONG>(reinterpret_cast<ULONG_PTR>(handle));
}

// Starts this program as a companion, which inherits the handles. Null when it cannot be started.
HANDLE StartAnew(Companion::Script script, HANDLE hears, HANDLE tells) {
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    HANDLE test = OpenProcess(SYNCHRONIZE, FALSE, GetCurrentProcessId());
    char numbers[64] = {};
    std::snprintf(numbers, sizeof numbers, ArgumentFormat,
                  static_cast<ULONG>(reinterpret_cast<ULONG_PTR>(script) - Base()), Number(test),
                  Number(hears), Number(tells));
    std::string line =
        std::string("\"") + program + "\" --gtest_brief=1 " + Argument + numbers + simulator::MachineName();
    for (const HANDLE handle : {test, hears, tells}) {
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION started = {};
    const BOOL runs =
        CreateProcessA(program, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &started);
    EXPECT_TRUE(runs) << "no process: " << GetLastError();
    for (const HANDLE handle : {test, hears, tells, started.hThread}) {
        CloseHandle(handle);
    }
    return started.hProcess;
}

}  // namespace

// A machine goes with its last process.
void SharedMachine::Remove() const {}

struct Companion::Process {
    HANDLE Hears;
    HANDLE Tells;
    HANDLE Handle;  // null in the companion itself, and when it has been killed
};

Companion::Companion(std::unique_ptr<Process> test) : process_(std::move(test)) {}

Companion::Companion(Script script) {
    const Pipe there;
    const Pipe back;
    process_ =
        std::make_unique<Process>(Process{back.Read, there.Write, StartAnew(script, there.Read, back.Write)});
}

Companion::~Companion() {
    CloseHandle(process_->Tells);  // it hears nothing more, so it comes to its end
    if (process_->Handle != nullptr) {
        DWORD status = 0;
        WaitForSingleObject(process_->Handle, INFINITE);
        GetExitCodeProcess(process_->Handle, &status);
        EXPECT_EQ(status, 0u) << "how the companion ended";
        CloseHandle(process_->Handle);
    }
    CloseHandle(process_->Hears);
}

void Companion::Tell(int64_t number) {
    DWORD length = 0;
    EXPECT_TRUE(WriteFile(process_->Tells, &number, sizeof number, &length, nullptr));
}

int64_t Companion::Hear() {
    char bytes[sizeof(int64_t)];
    for (DWORD heard = 0; heard < sizeof bytes;) {
        DWORD length = 0;
        if (!ReadFile(process_->Hears, bytes + heard, sizeof bytes - heard, &length, nullptr)) {
            return Gone;
        }
        heard += length;
    }
    int64_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

void Companion::Kill() {
    TerminateProcess(process_->Handle, 3);
    WaitForSingleObject(process_->Handle, INFINITE);
    CloseHandle(process_->Handle);
    process_->Handle = nullptr;
}

// The process that was started for a script.
struct StartedAnew {
    [[noreturn]] static void Play(const char* argument) {
        ULONG script = 0;
        ULONG parent = 0;
        ULONG hears = 0;
        ULONG tells = 0;
        std::sscanf(argument, ArgumentFormat, &script, &parent, &hears, &tells);
        simulator::UseMachine(std::strrchr(argument, ',') + 1);
        std::thread([parent] {  // however the test ends
            WaitForSingleObject(reinterpret_cast<HANDLE>(parent), INFINITE);
            TerminateProcess(GetCurrentProcess(), 4);
        })
            .detach();
        Companion test(std::make_unique<Companion::Process>(
            Companion::Process{reinterpret_cast<HANDLE>(hears), reinterpret_cast<HANDLE>(tells), nullptr}));
        reinterpret_cast<Companion::Script>(Base() + script)(test);
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
};

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    if (count == 2 && std::string_view(arguments[1]).starts_with(Argument)) {
        StartedAnew::Play(arguments[1] + std::strlen(Argument));
    }
    const int status = RUN_ALL_TESTS();
    test_system::FreshMachine();  // the registry outlasts this program
    return status;
}
