// Up to 16 cards and the kernel driver in front of them, in software. This is what tests and tools use.
//
// A process has at most one Simulator. Its constructor puts the cards on the machine, or joins those that
// another process of the same machine has put there, and takes the place of the kernel driver and of the
// timer. Its destructor gives both places back; the wave driver must have been unloaded before.
//
// Time is of one of two kinds. Real: the cards run at their sample rate on the host's clock. Stepped: the
// timer, the kernel stall and the sample clocks share one virtual clock. It is moved by Advance, by a stall,
// and by a thread that reads the timer again and again without doing anything else; otherwise it stands.
//
// Card numbers are below CardCount(). Every member may be called on any thread, except that a thread
// that receives completions does not Advance.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/card/port.h"
#include "simulator/card/register_view.h"
#include "simulator/channels/frame_sink.h"
#include "simulator/connectors/channel_status.h"
#include "simulator/connectors/input_signal.h"
#include "simulator/machine/setup.h"
#include "simulator/requests/request_names.h"
#include "simulator/trace/fault.h"
#include "simulator/trace/trace.h"

namespace simulator {

// Times in which the card wanted a buffer and had none: the underruns of an output, the overruns of an input.
struct Gaps {
    unsigned Count = 0;
    uint64_t Longest = 0;  // frames
    uint64_t First = 0;    // frames played or recorded before the first of them
};

// What a card's output channel has done since it was last acquired.
struct OutputStatus {
    bool Started;              // at least one frame was played
    uint64_t StartFrame;       // count of the group's clock at its first frame
    uint64_t FramesPlayed;     // frames taken out of buffers
    uint64_t FramesSilent;     // frames that passed between first and last without data
    Gaps Underruns;            // ... where
    unsigned BuffersInFlight;  // queued and not yet finished
    unsigned MostInFlight;
    uint64_t BuffersFinished;
    uint64_t BuffersFlushed;  // of those finished, the ones that were not played to their end
};

// What a card's input channel has done since it was last acquired.
struct InputStatus {
    bool Started;              // at least one frame was recorded
    uint64_t StartFrame;       // count of the group's clock at its first frame
    uint64_t FramesRecorded;   // frames taken into buffers
    uint64_t FramesDropped;    // frames that passed between first and last of a recording without a buffer
    Gaps Overruns;             // ... where
    unsigned BuffersInFlight;  // queued and not yet finished
    unsigned MostInFlight;
    uint64_t BuffersFinished;
    uint64_t BuffersFlushed;  // of those finished, the ones that were not filled to their end
};

// What arrives at a digital input.
struct DigitalSignal {
    unsigned Rate;                        // Hz; 0: no signal
    std::optional<ChannelStatus> Status;  // that of the card at the other end of a cable
};

class Simulator {
public:
    // On a machine that another process has a simulator on, the cards and the time are as that one
    // made them. Otherwise `Cards` fresh cards come up, with every register at its power-up value.
    struct Options {
        unsigned Cards = 1;  // 0: the cards that the machine has, or one on a new machine
        // Nothing: the kind that the machine has, or real on a new machine.
        std::optional<TimeKind> Time = TimeKind::Stepped;
        // What no correct driver does ends the program with a line that says so (docs/simulator.md).
        bool Strict = false;
    };
    explicit Simulator(const Options& options);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    unsigned CardCount() const;
    bool OthersAttached() const;  // whether another process has a simulator on the machine

    // --- time -------------------------------------------------------------------------------
    TimeKind Time() const;
    int64_t NowMicroseconds() const;

    // Stepped only: moves the virtual clock on. Everything due on the way happens in order of its
    // time, and the driver has dealt with each completion before the clock goes on.
    void Advance(int64_t microseconds);

    // Stepped only: Advance to the next buffer end of any running channel of this process, or to the next
    // late completion, at most `limit` microseconds. False when none was due within it (the clock has moved
    // by `limit`).
    bool AdvanceToNextCompletion(int64_t limit);

    // Stepped only: what every request takes of the cards' time; at first nothing. What is not behind a hold
    // then starts apart.
    void SetRequestTime(int64_t microseconds);

    // --- the scene --------------------------------------------------------------------------
    // The card's device key, relative to HKEY_LOCAL_MACHINE.
    static std::u16string RegistryPath(unsigned card);

    // A missing card cannot be opened, and every request on a file that is still open on it fails. A
    // card that comes back has been powered up.
    void SetPresent(unsigned card, bool present);
    // What the card goes through when the computer sleeps: every register is at its power-up value,
    // every channel disarmed and not acquired. Claims and queued buffers stay.
    void PowerCycle(unsigned card);
    void SetIdentityPage(unsigned card, std::span<const uint8_t, 128> page);  // 0xFF80
    void SetVersionPage(unsigned card, std::span<const uint8_t, 128> page);   // 0xFF00
    void SetPciRegister(unsigned card, unsigned offset, std::span<const uint8_t> bytes);
    // The signal takes the place of what was plugged in before. At first nothing is plugged in, and a digital
    // input has no signal. What is plugged in belongs to this process. A Cable may come from the same card.
    void PlugIn(unsigned card, Port port, InputSignal signal);
    // The rate that arrives on the digital input, in Hz, in place of the plugged-in signal's own, until
    // something else is plugged in. The receiver measures it, and a card that runs on its digital input runs
    // at it. 0: there is no signal, and the input is silent.
    void SetDigitalInputRate(unsigned card, unsigned hertz);
    // Makes an external clock source invalid, or valid again: 0x20 the link, 0x40 the digital input, 0x60 the
    // PLL.
    void SetClockBroken(unsigned card, unsigned source, bool broken);
    void SetDrift(unsigned card, int partsPerMillion);

    // --- what the card was told and what it did ----------------------------------------------
    uint8_t CardRegister(unsigned card, unsigned index) const;
    uint8_t OutputRegister(unsigned card, Port port, unsigned index) const;
    uint8_t InputRegister(unsigned card, Port port, unsigned index) const;
    uint8_t IndirectRegister(unsigned card, unsigned index) const;
    unsigned MixerGain(unsigned card, unsigned index) const;
    std::vector<RegisterView> Registers(unsigned card) const;
    unsigned SampleRate(unsigned card) const;  // the rate that the card runs at, Hz; 0: no clock
    uint64_t ClockFrame(unsigned card) const;  // frames counted by the card's (group's) clock

    DigitalSignal DigitalInput(unsigned card) const;
    // What a recorder on the card's digital output shows; nothing when it has no signal or does not
    // understand what it is told.
    std::optional<ChannelStatus> SentStatus(unsigned card) const;

    OutputStatus Output(unsigned card, Port port) const;
    InputStatus Input(unsigned card, Port port) const;

    // --- what the outputs played ---------------------------------------------------------------
    // Of each output there are two things to be had. *Played* are the frames that the output channel took out
    // of its buffers, bit for bit. *Heard* is what left the card's connector from the channel's first frame
    // to its last: all four mixer sources at their gains, with silence where the channel had no data. What
    // channels of other processes play on the card is not in it. What the next file plays follows without a
    // gap.
    //
    // Nothing is kept unless somebody asks. The sink is given the frames from now on; an empty one ends that.
    void SendPlayed(unsigned card, Port port, FrameSink sink);
    void SendHeard(unsigned card, Port port, FrameSink sink);
    // Keeps both, of every output, in memory; in place of sinks.
    void KeepAudio();
    std::vector<Frame> Played(unsigned card,
                              Port port) const;  // what was kept; outlasts the file that played it
    std::vector<Frame> Heard(unsigned card, Port port) const;
    void ForgetAudio();  // empties both, of every output

    bool ChannelClaimed(unsigned card, unsigned channel) const;  // by any process of the machine
    unsigned OpenFiles() const;                                  // of this process

    // --- trace and faults ---------------------------------------------------------------------
    // The requests of this process, since it began or the last ClearTrace. They are counted; kept or sent to
    // a sink only when asked for, from then on.
    uint64_t RequestCount() const;
    void SendTrace(TraceSink sink);  // an empty one: ends it, with what is still under way given as it is
    void KeepTrace();
    std::vector<TraceEntry> Trace() const;  // what was kept
    void ClearTrace();
    // What becomes of a client's header now, by the calling thread, for whoever writes a trace.
    HeaderEvent NoteHeader(HeaderEvent::Kind what, unsigned card, uint32_t channel, const void* header) const;
    // Answers a number for FaultStatus.
    unsigned AddFault(const Fault& fault);
    // Whether the fault has struck, and how many requests or completions it has matched.
    FaultStatus StatusOf(unsigned fault) const;
    void ClearFaults();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace simulator
