#include "simulator/requests/kernel_driver.h"

#include <optional>
#include <utility>

#include "simulator/machine/claims.h"
#include "simulator/requests/request_hold.h"
#include "simulator/requests/requests.h"

namespace simulator {
namespace {

// The card that a device path names; nothing for any other path. Ordinals are written without
// leading zeros.
std::optional<unsigned> OrdinalOf(const WCHAR* path) {
    for (const char c : std::string_view("\\\\.\\Kestrelvox")) {
        if (*path++ != static_cast<WCHAR>(c)) {
            return std::nullopt;
        }
    }
    unsigned ordinal = 0;
    const WCHAR* digits = path;
    for (; *path >= '0' && *path <= '9' && path - digits < 3; ++path) {
        ordinal = ordinal * 10 + static_cast<unsigned>(*path - '0');
    }
    const bool padded = path - digits > 1 && *digits == '0';
    return path == digits || *path != 0 || padded ? std::nullopt : std::optional(ordinal);
}

DWORD CheckState(const OpenFile& file, const MachineState& machine, FileState needs) {
    if (file.Bound != (needs != FileState::Unbound)) {
        return ERROR_BAD_COMMAND;
    }
    if (needs < FileState::Channel) {
        return ERROR_SUCCESS;
    }
    if (!file.HasChannel()) {
        return ERROR_BAD_COMMAND;
    }
    const bool acquired = machine.Cards[file.Card].Channels[file.Channel].Acquired;
    return needs == FileState::Hardware && !acquired ? ERROR_NOT_READY : ERROR_SUCCESS;
}

DWORD CheckLengths(const RequestDefinition& definition, const device::Request& request) {
    if (request.InputLength != definition.InputLength || (request.InputLength != 0 && !request.Input)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (definition.OutputLength == AnyLength || request.OutputLength == definition.OutputLength) {
        return request.OutputLength != 0 && !request.Output ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
    }
    return request.OutputLength < definition.OutputLength ? ERROR_INSUFFICIENT_BUFFER
                                                          : ERROR_INVALID_PARAMETER;
}

// What a fault makes of a request that has taken effect.
DWORD AfterFault(const Fault& fault, device::Request& request) {
    if (fault.What == Fault::Kind::Pend) {
        request.BytesReturned = 0;
        return ERROR_IO_PENDING;
    }
    if (fault.What == Fault::Kind::Short && request.BytesReturned > 0) {
        --request.BytesReturned;
    }
    return ERROR_SUCCESS;
}

}  // namespace

DWORD KernelDriver::Open(const WCHAR* path, void** file) {
    const std::optional<unsigned> ordinal = OrdinalOf(path);
    const host::MachineGuard guard;
    const MachineState& machine = Machine();
    if (!ordinal || *ordinal >= machine.CardCount || !machine.Cards[*ordinal].Present) {
        return ERROR_FILE_NOT_FOUND;
    }
    *file = side_.Open(*ordinal);
    return ERROR_SUCCESS;
}

void KernelDriver::Close(void* closing) {
    OpenFile* file = static_cast<OpenFile*>(closing);
    const std::unique_lock<host::Lock> hold = side_.Completions.Hold();
    const host::MachineGuard guard;
    MachineState& machine = Machine();
    const int64_t now = machine.Now();
    side_.CatchUp(now);
    if (file->HasChannel()) {
        GiveUpChannel(machine, file->Card, file->Channel, now);
        machine.Disturbed = machine.Disturbed && AnyClaimed(machine);
    }
    side_.Close(file);
}

std::optional<uint64_t> KernelDriver::Begin(const OpenFile& file, const device::Request& request) {
    side_.Trace.Count();
    if (!side_.Trace.WantsEntries()) {
        return std::nullopt;
    }
    const host::MachineGuard guard;
    TraceEntry entry = EntryOf(file, request.Code, Machine().Now());
    const auto* input = static_cast<const uint8_t*>(request.Input);
    entry.Input.assign(input, input + (input ? request.InputLength : 0));
    entry.OutputLength = request.OutputLength;
    return side_.Trace.Begin(std::move(entry));
}

DWORD KernelDriver::Serve(OpenFile& file, device::Request& request, int64_t* stallFor,
                          std::optional<Fault>* struck) {
    MachineState& machine = Machine();
    RequestCall call{side_, file, request, machine, machine.Now()};
    side_.CatchUp(call.Now);

    const std::optional<Fault> fault = *struck = side_.Faults.Strike(request.Code);
    machine.Disturbed = machine.Disturbed || fault || !machine.Cards[file.Card].Present;
    if (fault && fault->What == Fault::Kind::Fail) {
        return fault->Error;
    }
    if (!machine.Cards[file.Card].Present) {
        return ERROR_DEV_NOT_EXIST;
    }
    const RequestDefinition* definition = FindRequest(request.Code);
    if (!definition) {
        return ERROR_INVALID_FUNCTION;
    }
    DWORD result = CheckState(file, machine, definition->Needs);
    if (result == ERROR_SUCCESS) {
        result = CheckLengths(*definition, request);
    }
    if (result == ERROR_SUCCESS) {
        result = definition->Handle(call);
    }
    *stallFor = call.StallFor + (machine.Stepped ? machine.RequestTime : 0);
    return result == ERROR_SUCCESS && fault ? AfterFault(*fault, request) : result;
}

DWORD KernelDriver::Control(void* opened, device::Request& request) {
    Timeline::NoteRequest();
    RequestHold::Reach(RequestHold::Where::Before);
    OpenFile& file = *static_cast<OpenFile*>(opened);
    const std::optional<uint64_t> number = Begin(file, request);
    int64_t stallFor = 0;
    std::optional<Fault> struck;
    DWORD result = ERROR_SUCCESS;
    int64_t ended = 0;
    bool finishedBuffers = false;
    {
        // Once the routine has been taken away, no call of it is on its way any more.
        std::unique_lock<host::Lock> hold;
        if (request.Code == SetCompletionRoutine) {
            hold = side_.Completions.Hold();
        }
        const host::MachineGuard guard;
        result = Serve(file, request, &stallFor, &struck);
        ended = number ? (Machine().Now() + stallFor) / 1000 : 0;
        finishedBuffers = side_.Completions.HasReady();
    }
    if (struck && struck->What == Fault::Kind::Die) {
        host::Die();
    }
    if (number) {
        const auto* output = static_cast<const uint8_t*>(request.Output);
        side_.Trace.Finish(
            *number, {output, output ? request.BytesReturned : 0},
            {.At = ended, .Result = result, .Struck = struck ? std::optional(struck->What) : std::nullopt});
    }
    if (finishedBuffers) {
        side_.Completions.Deliver();
    }
    if (stallFor > 0) {
        timeline_.Stall(stallFor);
    }
    RequestHold::Reach(RequestHold::Where::After);
    return result;
}

}  // namespace simulator
