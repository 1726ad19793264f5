#include "simulator/requests/requests.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>

#include "simulator/card/card_power.h"
#include "simulator/card/register_file.h"
#include "simulator/channels/channel_run.h"
#include "simulator/clock/clock_control.h"
#include "simulator/machine/claims.h"
#include "simulator/requests/request_names.h"
#include "simulator/requests/rules.h"

namespace simulator {
namespace {

// --- handing over a buffer ----------------------------------------------------------------------

DWORD DoBeginBuffer(RequestCall& call) {
    call.File.Stage = OpenFile::HandOver::Begun;  // a half-announced one is dropped
    return ERROR_SUCCESS;
}

// Only in its place in the sequence; out of it, what was announced is dropped.
DWORD NextStage(RequestCall& call, OpenFile::HandOver from, OpenFile::HandOver to) {
    const bool inOrder = call.File.Stage == from;
    call.File.Stage = inOrder ? to : OpenFile::HandOver::None;
    return inOrder ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

DWORD DoMapBuffer(RequestCall& call) {
    if (!call.Request.Output || call.Request.OutputLength == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    call.File.Announced = {static_cast<uint8_t*>(call.Request.Output), call.Request.OutputLength, 0};
    return NextStage(call, OpenFile::HandOver::Begun, OpenFile::HandOver::Mapped);
}

DWORD DoSetBufferCookie(RequestCall& call) {
    call.File.Announced.Cookie = call.Input<ULONG_PTR>();
    return NextStage(call, OpenFile::HandOver::Mapped, OpenFile::HandOver::Named);
}

DWORD DoQueueBuffer(RequestCall& call) {
    if (call.Input<uint32_t>() > 1) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD result = NextStage(call, OpenFile::HandOver::Named, OpenFile::HandOver::None);
    if (result == ERROR_SUCCESS) {
        call.Side.Player(call.File.Card).Queue(call.Card(), call.File.Channel, call.File.Announced);
    }
    return result;
}

// --- running a channel ----------------------------------------------------------------------------

template <void (*Change)(MachineState&, unsigned, unsigned, int64_t)>
DWORD DoChange(RequestCall& call) {
    Change(call.Machine, call.File.Card, call.File.Channel, call.Now);
    return ERROR_SUCCESS;
}

// A transfer that begins a new count fills memory from the start of a buffer.
DWORD DoStartTransfer(RequestCall& call) {
    if (call.File.Channel < FirstOutput && call.Channel().CountsFromZero) {
        call.Side.Player(call.File.Card).RestartCapture(call.File.Channel);
    }
    StartChannelTransfer(call.Machine, call.File.Card, call.File.Channel, call.Now);
    return ERROR_SUCCESS;
}

DWORD DoStopTransfer(RequestCall& call) {
    call.Channel().TransferAsked = false;
    StopChannelTransfer(call.Machine, call.File.Card, call.File.Channel, call.Now);
    if (call.File.Channel < FirstOutput) {
        call.Side.GiveBackPartFilled(call.File, call.Now);
    }
    return ERROR_SUCCESS;
}

DWORD DoFlushBuffers(RequestCall& call) {
    StopChannelTransfer(call.Machine, call.File.Card, call.File.Channel, call.Now);
    call.Channel().Position = 0;
    call.File.Stage = OpenFile::HandOver::None;
    call.Side.Flush(call.File, call.Now);
    return ERROR_SUCCESS;
}

DWORD DoGetPosition(RequestCall& call) {
    call.AnswerWord(call.Channel().Position);
    return ERROR_SUCCESS;
}

DWORD DoSetCompletionRoutine(RequestCall& call) {
    const auto routine = reinterpret_cast<device::ProcedureCall>(call.Input<ULONG_PTR>());
    if (routine) {
        call.File.Completion = {host::CurrentThread(), host::CurrentThreadId(), routine};
    } else {
        call.File.Completion = {};
        call.Side.Completions.Forget(call.File.Number);
    }
    return ERROR_SUCCESS;
}

// A second file cannot come here: it is this one that has the hardware, or had it before the power went.
DWORD DoAcquireChannel(RequestCall& call) {
    const bool acquired = AcquireChannelHardware(call.Machine, call.File.Card, call.File.Channel, call.Now);
    return acquired ? ERROR_SUCCESS : ERROR_BUSY;
}

DWORD DoArmChannel(RequestCall& call) {
    CheckArm(call);
    ArmChannelRun(call.Machine, call.File.Card, call.File.Channel, call.Now);
    return ERROR_SUCCESS;
}

DWORD DoReleaseChannel(RequestCall& call) {
    if (call.File.HasChannel()) {
        call.Channel().TransferAsked = false;
        ReleaseChannelHardware(call.Machine, call.File.Card, call.File.Channel, call.Now);
    }
    return ERROR_SUCCESS;
}

// --- time and clock -------------------------------------------------------------------------------

DWORD DoStall(RequestCall& call) {
    call.StallFor = static_cast<int64_t>(call.Input<uint32_t>()) * 1000;
    return ERROR_SUCCESS;
}

DWORD DoReadClockFault(RequestCall& call) {
    call.AnswerWord(TakeClockFault(call.Card(), call.Now) ? 1 : 0);
    return ERROR_SUCCESS;
}

// --- memory, configuration space, registers ---------------------------------------------------------

DWORD DoReadNvramPage(RequestCall& call) {
    switch (call.Input<uint32_t>()) {
    case IdentityPageAddress:
        call.Answer(call.Card().IdentityPage.data(), NvramPageSize);
        return ERROR_SUCCESS;
    case VersionPageAddress:
        call.Answer(call.Card().VersionPage.data(), NvramPageSize);
        return ERROR_SUCCESS;
    default:
        return ERROR_INVALID_PARAMETER;
    }
}

bool IsPciAccess(const RequestCall& call) {
    const uint32_t length = call.Request.OutputLength;
    return (length == 1 || length == 2 || length == 4) && call.Request.Output &&
           call.Input<uint32_t>() <= PciConfigSize - length;
}

DWORD DoReadPciConfig(RequestCall& call) {
    if (!IsPciAccess(call)) {
        return ERROR_INVALID_PARAMETER;
    }
    call.Answer(call.Card().PciConfig.data() + call.Input<uint32_t>(), call.Request.OutputLength);
    return ERROR_SUCCESS;
}

DWORD DoWritePciConfig(RequestCall& call) {
    if (!IsPciAccess(call)) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto* bytes = static_cast<const uint8_t*>(call.Request.Output);
    for (uint32_t i = 0; i < call.Request.OutputLength; ++i) {
        const uint32_t offset = call.Input<uint32_t>() + i;
        const uint8_t mask = WritablePciBits(offset);
        uint8_t& place = call.Card().PciConfig[offset];
        place = static_cast<uint8_t>((place & ~mask) | (bytes[i] & mask));
    }
    return ERROR_SUCCESS;
}

// The register that the request names; null, and why in `error`, when it cannot be had.
const RegisterDefinition* NamedRegister(const RequestCall& call, DWORD* error) {
    const auto request = call.Input<RegisterRequest>();
    *error = ERROR_INVALID_PARAMETER;
    if (request.Width != 8 || request.Space > 1) {
        return nullptr;
    }
    if (request.Space == 0) {
        return FindRegister(RegisterFile::Card, 0, request.Register);
    }
    if (!call.File.HasChannel() || !call.Channel().Acquired) {
        *error = call.File.HasChannel() ? ERROR_NOT_READY : ERROR_BAD_COMMAND;
        return nullptr;
    }
    return FindRegister(RegisterFile::Port, call.File.Channel, request.Register);
}

DWORD DoReadRegister(RequestCall& call) {
    DWORD error = ERROR_SUCCESS;
    const RegisterDefinition* definition = NamedRegister(call, &error);
    if (!definition) {
        return error;
    }
    CheckRegisterRead(call, *definition);
    call.AnswerWord(
        ReadRegisterValue(call.Machine, call.File.Card, call.File.Channel, *definition, call.Now));
    return ERROR_SUCCESS;
}

DWORD DoWriteRegister(RequestCall& call) {
    DWORD error = ERROR_SUCCESS;
    const RegisterDefinition* definition = NamedRegister(call, &error);
    if (!definition) {
        return error;
    }
    const auto request = call.Input<RegisterRequest>();
    CheckRegisterWrite(call, *definition, static_cast<uint8_t>(request.Value),
                       static_cast<uint8_t>(request.Mask));
    WriteRegisterValue(call.Machine, call.File.Card, call.File.Channel, *definition,
                       static_cast<uint8_t>(request.Value), static_cast<uint8_t>(request.Mask), call.Now);
    return ERROR_SUCCESS;
}

// --- the driver -------------------------------------------------------------------------------------

DWORD DoSoftReset(RequestCall& call) {
    SoftResetCard(call.Machine, call.File.Card, call.Now);
    call.Side.FlushCard(call.File.Card, call.Now);
    return ERROR_SUCCESS;
}

DWORD DoGetRegistryPath(RequestCall& call) {
    const std::u16string path = RegistryPathOf(call.File.Card);
    const size_t size = (path.size() + 1) * sizeof(char16_t);
    if (!call.Request.Output || call.Request.OutputLength < size) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    call.Answer(path.c_str(), size);
    return ERROR_SUCCESS;
}

DWORD DoBindHandle(RequestCall& call) {
    const auto request = call.Input<BindRequest>();
    const bool control = request.Channel == ControlChannel;
    if (request.Ordinal != call.File.Card || (!control && request.Channel >= ChannelCount)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!control) {
        if (!ClaimChannel(call.Machine, call.File.Card, request.Channel, call.File.Number, call.Now)) {
            return ERROR_BUSY;
        }
        call.Side.Player(call.File.Card).Take(request.Channel);
    }
    call.File.Channel = request.Channel;
    call.File.Bound = true;
    return ERROR_SUCCESS;
}

constexpr uint32_t Address = sizeof(ULONG_PTR);

constexpr RequestDefinition Table[] = {
    {BeginBuffer, "BEGIN_BUFFER", FileState::Hardware, 0, 0, DoBeginBuffer},
    {MapBuffer, "MAP_BUFFER", FileState::Hardware, 0, AnyLength, DoMapBuffer},
    {QueueBuffer, "QUEUE_BUFFER", FileState::Hardware, 4, 0, DoQueueBuffer},
    {StartTransfer, "START_TRANSFER", FileState::Hardware, 0, 0, DoStartTransfer},
    {StopTransfer, "STOP_TRANSFER", FileState::Hardware, 0, 0, DoStopTransfer},
    {FlushBuffers, "FLUSH_BUFFERS", FileState::Channel, 0, 0, DoFlushBuffers},
    {SetBufferCookie, "SET_BUFFER_COOKIE", FileState::Hardware, Address, 0, DoSetBufferCookie},
    {GetPosition, "GET_POSITION", FileState::Channel, 0, 4, DoGetPosition},
    {DisarmChannel, "DISARM_CHANNEL", FileState::Hardware, 0, 0, DoChange<DisarmChannelRun>},
    {ArmChannel, "ARM_CHANNEL", FileState::Hardware, 0, 0, DoArmChannel},
    {SetCompletionRoutine, "SET_COMPLETION_ROUTINE", FileState::Channel, Address, 0, DoSetCompletionRoutine},
    {Stall, "STALL", FileState::Bound, 4, 0, DoStall},
    {ReadClockFault, "READ_CLOCK_FAULT", FileState::Bound, 0, 4, DoReadClockFault},
    {ReadNvramPage, "READ_NVRAM_PAGE", FileState::Bound, 4, NvramPageSize, DoReadNvramPage},
    {ReleaseChannel, "RELEASE_CHANNEL", FileState::Bound, 0, 0, DoReleaseChannel},
    {AcquireChannel, "ACQUIRE_CHANNEL", FileState::Channel, 0, 0, DoAcquireChannel},
    {ReadPciConfig, "READ_PCI_CONFIG", FileState::Bound, 4, AnyLength, DoReadPciConfig},
    {WritePciConfig, "WRITE_PCI_CONFIG", FileState::Bound, 4, AnyLength, DoWritePciConfig},
    {ReadRegister, "READ_REGISTER", FileState::Bound, sizeof(RegisterRequest), 4, DoReadRegister},
    {WriteRegister, "WRITE_REGISTER", FileState::Bound, sizeof(RegisterRequest), 0, DoWriteRegister},
    {SoftReset, "SOFT_RESET", FileState::Bound, 0, 0, DoSoftReset},
    {GetRegistryPath, "GET_REGISTRY_PATH", FileState::Bound, 0, AnyLength, DoGetRegistryPath},
    {BindHandle, "BIND_HANDLE", FileState::Unbound, sizeof(BindRequest), 0, DoBindHandle},
};

constexpr bool IsOnlyOne(const RequestDefinition& row) {
    return std::none_of(std::begin(Table), std::end(Table), [&row](const RequestDefinition& other) {
        return &other != &row && (other.Code == row.Code || std::string_view(other.Name) == row.Name);
    });
}
static_assert(std::all_of(std::begin(Table), std::end(Table), IsOnlyOne),
              "two requests have one code or one name");

}  // namespace

std::u16string RegistryPathOf(unsigned card) {
    std::u16string path = u"System\\CurrentControlSet\\Services\\Kestrelvox\\Device";
    for (const char digit : std::to_string(card)) {
        path.push_back(static_cast<char16_t>(digit));
    }
    return path;
}

std::span<const RequestDefinition> RequestTable() {
    return Table;
}

const RequestDefinition* FindRequest(uint32_t code) {
    const auto found =
        std::find_if(std::begin(Table), std::end(Table),
                     [code](const RequestDefinition& request) { return request.Code == code; });
    return found == std::end(Table) ? nullptr : found;
}

std::string RequestName(uint32_t code) {
    if (const RequestDefinition* request = FindRequest(code)) {
        return request->Name;
    }
    char text[16];
    std::snprintf(text, sizeof text, "%08X", code);
    return text;
}

std::optional<uint32_t> RequestCode(std::string_view name) {
    const auto same = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 'a' + 'A' : a) == b; };
    for (const RequestDefinition& request : Table) {
        const std::string_view known = request.Name;
        if (std::equal(name.begin(), name.end(), known.begin(), known.end(), same)) {
            return request.Code;
        }
    }
    return std::nullopt;
}

}  // namespace simulator
