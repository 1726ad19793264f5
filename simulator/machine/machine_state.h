// What the processes of a machine share: its cards, as hardware, and the virtual clock.
//
// Lives in the machine's memory: plain values, no pointers, valid when zero-filled. Everything here
// is read and written only under host::LockMachine.
//
// A card counts sample frames on two scales. Its clock's count (the group's, when it follows a link)
// jumps when the card gets another clock. Its ticks do not: they go on from where they were, as fast
// as the clock does, and all that concerns moving samples is told in ticks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "simulator/card/register_map.h"
#include "simulator/clock/sample_clock.h"
#include "simulator/machine/host.h"
#include "simulator/machine/setup.h"
#include "simulator/machine/tap.h"
#include "simulator/requests/protocol.h"

namespace simulator {

// Times in which frames passed between two moved ones without a buffer.
struct ChannelGaps {
    uint32_t Count;
    uint64_t Longest;  // frames
    uint64_t First;    // frames moved before the first of them
};

// What a channel has done since it was last acquired.
struct ChannelTally {
    bool Started;           // at least one frame has moved
    uint64_t StartFrame;    // count of the group's clock at the first one
    uint64_t FramesMoved;   // out of or into buffers
    uint64_t FramesMissed;  // passed between two moved ones without a buffer
    ChannelGaps Gaps;
    unsigned BuffersInFlight;
    unsigned MostInFlight;
    uint64_t BuffersFinished;
    uint64_t BuffersFlushed;  // of those, without having been moved to their end
};

// One of the four channels of a card: who has it, and whether frames move.
struct ChannelState {
    // The claim
    host::Process Owner;  // Id 0: free
    uint32_t File;        // the owner's number for the file that claimed it

    // Run state, as the requests left it
    bool Acquired;
    bool TransferOn;
    bool Armed;
    bool Waiting;         // armed behind a start hold
    bool CountsFromZero;  // the next START_TRANSFER begins a new position count
    // START_TRANSFER has come since the last STOP_TRANSFER or release. Whatever else has stopped the transfer
    // (no data, another thread's flush, a loss of power) does not count.
    bool TransferAsked;
    bool PowerLost;  // acquired, and the hardware has lost its power: the file has to release it first

    // Frames move from MoveFrom on while Moving, else until MoveUntil; the owner catches up with it.
    bool Moving;
    uint64_t MoveFrom;       // tick
    uint64_t MoveFromFrame;  // the same, on the clock's count
    uint64_t MoveUntil;      // tick
    uint32_t Position;       // frames moved since the count began

    // Armed and started, but without a buffer since MissingFrom
    bool Missing;
    uint64_t MissingFrom;     // tick
    uint64_t MissingPending;  // frames without a buffer since the last one that had one

    ChannelTally Tally;
};

// A rate measurement of the digital input, by the card or by the digital input port.
struct Measurement {
    bool ReceiverOn;        // the receiver it looks at, and
    int64_t ReceiverReady;  // when that has settled: time
    int64_t PulseRose;      // time
    bool Running;
    uint64_t ReadyTick;  // of the running one
    uint8_t Seen;        // what the last one measured
    uint8_t NextResult;  // of the running one: what the last one measured, too, else the old result
    uint8_t Result;      // as the measured-rate register shows it, but for its low and top bits
    uint8_t Count;       // of measurements

    bool Settled(int64_t now) const { return ReceiverOn && now >= ReceiverReady; }
};

// What pulses have done to the card's converters and transmitter since it was powered up.
struct ConverterPulses {
    int64_t CalibrateRose;  // times
    int64_t Calibrated;     // when the calibration is over; 0: none has begun
    int64_t RestartRose;
    int64_t AnalogInputReady;  // 0: not restarted
    int64_t TransmitFell;
    bool Transmits;
    bool Restarted;          // the next resync pulse brings the converters in step with the clock,
    int64_t RestartSettled;  // ... which they are from this time on
    int64_t ResyncFell;
    bool InStep;          // with the clock, as long as its setting is
    uint16_t InStepWith;  // ... this one
    int64_t Settled;
};

// Where the signal on the digital input gets its rate from.
enum class DigitalClocking : uint8_t {
    Fixed,     // as told; at first none at all
    WithCard,  // its source keeps to this card's clock
    Cabled,    // the clock of the card at the other end of the cable
};

struct CardState {
    bool Present;

    // Registers, indexed by their number
    std::array<uint8_t, 40> CardFile;
    std::array<std::array<uint8_t, 3>, ChannelCount> PortFiles;
    std::array<uint8_t, 16> IndirectFile;
    std::array<uint8_t, 8> MixerFile;

    // Clock
    SampleClock Clock;
    int64_t TickOffset;  // ticks minus the clock's count, modulo 2^64
    uint32_t Supplier;   // the card whose clock this one runs on: itself, or the link's driver
    uint32_t Lag;        // frames by which a card that was not resynchronised is late
    bool ClockValid;
    int64_t InvalidSince;  // time; of no meaning while ClockValid
    bool FaultLatched;
    ConverterPulses Pulses;
    uint8_t HoldsSeen;  // start holds that have ever been set
    Measurement CardMeasurement;
    Measurement PortMeasurement;

    std::array<ChannelState, ChannelCount> Channels;

    // The scene
    DigitalClocking DigitalInputClocking;
    uint32_t DigitalInputRate;   // Fixed: Hz; 0: no signal
    uint32_t DigitalInputCable;  // Cabled: the card whose digital output it comes from
    std::array<bool, 4> Broken;  // by the source field of the clock select register
    int32_t Drift;

    std::array<uint8_t, NvramPageSize> IdentityPage;
    std::array<uint8_t, NvramPageSize> VersionPage;
    std::array<uint8_t, PciConfigSize> PciConfig;

    uint64_t TickAt(int64_t time) const { return Clock.FramesAt(time) + static_cast<uint64_t>(TickOffset); }
    int64_t TimeOfTick(uint64_t tick) const { return Clock.TimeOf(tick - static_cast<uint64_t>(TickOffset)); }
    // A resync bit that is left low holds the clock, too.
    bool Held() const {
        return (CardFile[card_register::ClockControl] & (ClockHeld | ResyncBit)) != ResyncBit;
    }
};

struct MachineState {
    static constexpr unsigned MaxProcesses = 64;
    static constexpr unsigned MaxTaps = 4;

    bool InUse;  // set up by a simulator that is, or was, attached
    bool Stepped;
    int64_t VirtualTime;  // nanoseconds; the clock of stepped time
    int64_t RequestTime;  // nanoseconds that each request takes; stepped time
    bool Strict;          // what no correct driver does ends the program
    bool Disturbed;       // ... but not from a failure that was asked for until no channel is claimed
    uint32_t CardCount;
    std::array<CardState, MaxCards> Cards;
    std::array<host::Process, MaxProcesses> Processes;  // those that have a simulator; Id 0: free place
    std::array<Tap, MaxTaps> Taps;
    uint32_t TapChanges;  // counts them

    int64_t Now() const { return Stepped ? VirtualTime : host::Nanoseconds(); }
};

// This machine's.
MachineState& Machine();

// Puts this process on the list, after taking the dead off it. When it is alone, `cards` fresh cards
// come up (unless `cards` is 0 and there are some) and time becomes as `time` says (nothing: stays as it
// was).
void AttachProcess(unsigned cards, std::optional<TimeKind> time);
void DetachProcess();
bool OthersAttached();

}  // namespace simulator
