// Any requests on device files of a card: each is answered or refused, within its buffers.
#include <windows.h>

#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/fresh_machine.h"
#include "fuzz/input_bytes.h"
#include "simulator/requests/protocol.h"
#include "simulator/requests/requests.h"

namespace {

constexpr unsigned FileCount = 3;

void CALLBACK IgnoreCompletion(ULONG_PTR, ULONG_PTR, ULONG_PTR) {}

class DeviceFiles {
public:
    DeviceFiles() {
        for (HANDLE& file : files_) {
            file = CreateFileW(TEXT("\\\\.\\Kestrelvox0"), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                               OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
            Require(file != INVALID_HANDLE_VALUE, "a device file does not open");
        }
    }
    ~DeviceFiles() {
        for (const HANDLE file : files_) {
            CloseHandle(file);
        }
    }
    DeviceFiles(const DeviceFiles&) = delete;
    DeviceFiles& operator=(const DeviceFiles&) = delete;

    // A code, sizes, and as many bytes. The buffers are as long as is said and no longer.
    void Send(InputBytes& input) {
        const HANDLE file = files_[input.TakeBelow(FileCount)];
        const DWORD code = TakeCode(input);
        std::vector<uint8_t> in = input.TakeBytes(input.TakeBelow(64));
        if (code == simulator::SetCompletionRoutine && in.size() == sizeof(ULONG_PTR)) {
            // A kernel calls whatever it is given; there is nothing to find in that.
            const auto routine = reinterpret_cast<ULONG_PTR>(&IgnoreCompletion);
            std::memcpy(in.data(), &routine, sizeof routine);
        }
        // The card may play from it or record to it until the files are closed.
        const DWORD size = input.Take<uint16_t>() % 1024;
        uint8_t* out = outputs_.emplace_back(new uint8_t[size]()).get();
        DWORD returned = 0;
        OVERLAPPED overlapped = {};
        DeviceIoControl(file, code, in.data(), static_cast<DWORD>(in.size()), out, size, &returned,
                        &overlapped);
        Require(returned <= size, "an answer longer than its buffer");
    }

private:
    static DWORD TakeCode(InputBytes& input) {
        const auto table = simulator::RequestTable();
        const uint8_t choice = input.Take<uint8_t>();
        return choice == 0xFF ? input.Take<uint32_t>() : table[choice % table.size()].Code;
    }

    std::vector<std::unique_ptr<uint8_t[]>> outputs_;
    HANDLE files_[FileCount];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InputBytes input(data, size);
    FreshMachine machine;
    {
        DeviceFiles files;
        while (!input.Empty()) {
            files.Send(input);
            machine.Cards().Advance(input.Take<uint8_t>() * 10);
        }
    }
    return 0;
}
