// The requests, one row each: what a file must be for one, the sizes of its buffers, what it does.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <span>
#include <string>

#include "simulator/machine/host.h"
#include "simulator/machine/process_side.h"

namespace simulator {

// One request under way. The machine's lock is held, and this process has caught up with `Now`.
struct RequestCall {
    ProcessSide& Side;
    OpenFile& File;
    device::Request& Request;
    MachineState& Machine;
    int64_t Now;
    int64_t StallFor = 0;  // nanoseconds to wait after the lock has been given up

    CardState& Card() const { return Machine.Cards[File.Card]; }
    ChannelState& Channel() const { return Card().Channels[File.Channel]; }

    // The input has been found to be of that size.
    template <typename T>
    T Input() const {
        T value;
        std::memcpy(&value, Request.Input, sizeof value);
        return value;
    }
    // The output buffer has been found large enough.
    void Answer(const void* bytes, size_t size) const {
        std::memcpy(Request.Output, bytes, size);
        Request.BytesReturned = static_cast<uint32_t>(size);
    }
    void AnswerWord(uint32_t value) const { Answer(&value, sizeof value); }
};

enum class FileState {
    Unbound,
    Bound,     // to the card, with a channel or without
    Channel,   // to a channel
    Hardware,  // to a channel whose hardware is acquired
};

inline constexpr uint32_t AnyLength = 0xFFFFFFFF;  // the handler looks at it

struct RequestDefinition {
    uint32_t Code;
    const char* Name;
    FileState Needs;
    uint32_t InputLength;
    uint32_t OutputLength;
    DWORD (*Handle)(RequestCall& call);
};

// The answer to GET_REGISTRY_PATH, without the zero that ends it.
std::u16string RegistryPathOf(unsigned card);

std::span<const RequestDefinition> RequestTable();

// Null when there is no such request.
const RequestDefinition* FindRequest(uint32_t code);

}  // namespace simulator
