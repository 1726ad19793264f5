// Whether memory can be touched, found out without touching it.
#include <windows.h>

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

namespace platform {

namespace {

bool WrapsAround(uintptr_t address, UINT_PTR bytes) {
    return address + bytes - 1 < address;
}

// The system copies the memory, so what is not there is an error of the copy.
bool CanRead(uintptr_t address, UINT_PTR bytes) {
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t last = address + bytes - 1;
    for (uintptr_t probe = address;; probe = std::min(last, (probe | (page - 1)) + 1)) {
        char copy = 0;
        const iovec local{&copy, 1};
        const iovec remote{reinterpret_cast<void*>(probe), 1};
        if (process_vm_readv(getpid(), &local, 1, &remote, 1, 0) != 1) {
            return false;
        }
        if ((probe | (page - 1)) >= last) {
            return true;
        }
    }
}

// A write would disturb other threads, so this asks the process's memory map.
bool CanWrite(uintptr_t address, UINT_PTR bytes) {
    const uintptr_t last = address + bytes - 1;
    uintptr_t next = address;  // everything below can be written
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        std::istringstream fields(line);
        uintptr_t begin = 0;
        uintptr_t end = 0;
        char dash = 0;
        std::string rights;
        fields >> std::hex >> begin >> dash >> end >> rights;
        if (next < begin || next >= end) {
            continue;
        }
        if (rights.size() < 2 || rights[1] != 'w') {
            return false;
        }
        if (last < end) {
            return true;
        }
        next = end;
    }
    return false;
}

}  // namespace

}  // namespace platform

BOOL WINAPI IsBadReadPtr(const void* lp, UINT_PTR ucb) {
    const auto address = reinterpret_cast<uintptr_t>(lp);
    return ucb != 0 && (platform::WrapsAround(address, ucb) || !platform::CanRead(address, ucb));
}

BOOL WINAPI IsBadWritePtr(LPVOID lp, UINT_PTR ucb) {
    const auto address = reinterpret_cast<uintptr_t>(lp);
    return ucb != 0 && (platform::WrapsAround(address, ucb) || !platform::CanWrite(address, ucb));
}
