// The kernel driver's place: device files "\\.\Kestrelvox<n>" and the requests on them.
#pragma once

#include <windows.h>

#include <optional>

#include "simulator/machine/host.h"
#include "simulator/machine/process_side.h"
#include "simulator/machine/timeline.h"

namespace simulator {

class KernelDriver final : public device::Driver {
public:
    KernelDriver(ProcessSide& side, Timeline& timeline) : side_(side), timeline_(timeline) {}

    DWORD Open(const WCHAR* path, void** file) override;
    void Close(void* file) override;
    DWORD Control(void* file, device::Request& request) override;

private:
    DWORD Serve(OpenFile& file, device::Request& request, int64_t* stallFor, std::optional<Fault>* struck);
    // The number that the trace has for it; nothing when the trace only counts.
    std::optional<uint64_t> Begin(const OpenFile& file, const device::Request& request);

    ProcessSide& side_;
    Timeline& timeline_;
};

}  // namespace simulator
