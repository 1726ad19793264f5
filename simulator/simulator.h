// A card and its kernel driver in software: up to 16 cards behind the driver's device requests.
//
// One Simulator per process. Its constructor puts the cards on the machine (or joins the cards that
// another process of the same machine put there) and takes the place of the kernel driver and of the
// timer; its destructor takes it away again, after the wave driver has been unloaded.
//
// Time is a dial. Real: cards run at their sample rate on the host's clock. Stepped: the timer, the
// kernel stall and the sample clocks share one virtual clock that moves only by Advance, by a stall,
// and by a thread that reads the timer again and again without doing anything else.
//
// Card numbers are below CardCount(). Every member may be called on any thread, except that a thread
// that receives completions does not Advance.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/trace/fault.h"
#include "simulator/trace/trace.h"

namespace simulator {

inline constexpr unsigned MaxCards = 16;

enum class TimeKind { Real, Stepped };
enum class Port { Analog = 0, Digital = 1 };

// One frame of sound, full scale at 32 bits whatever the stream's sample width.
struct Frame {
    int32_t Left;
    int32_t Right;
    bool operator==(const Frame&) const = default;
};

// What a card's output channel has done since it was last acquired.
struct OutputStatus {
    bool Started;              // at least one frame was played
    uint64_t StartFrame;       // count of the group's clock at its first frame
    uint64_t FramesPlayed;     // frames taken out of buffers
    uint64_t FramesSilent;     // frames that passed between first and last without data
    unsigned BuffersInFlight;  // queued and not yet finished
    unsigned MostInFlight;
    uint64_t BuffersFinished;
};

// What a card's input channel has done since it was last acquired.
struct InputStatus {
    bool Started;              // at least one frame was recorded
    uint64_t StartFrame;       // count of the group's clock at its first frame
    uint64_t FramesRecorded;   // frames taken into buffers
    uint64_t FramesDropped;    // frames that passed between first and last of a recording without a buffer
    unsigned BuffersInFlight;  // queued and not yet finished
    unsigned MostInFlight;
    uint64_t BuffersFinished;
};

// What is plugged into an input connector.
struct InputSignal {
    enum class Kind { Silence, Tone, Run, Cable };

    Kind What = Kind::Silence;
    double Hertz = 0;           // Tone
    int32_t Amplitude = 0;      // Tone: its peak
    std::vector<Frame> Frames;  // Run
    unsigned Card = 0;          // Cable: where it comes from
    Port Output = Port::Analog;
    unsigned Rate = 0;  // digital input, not Cable: Hz of the arriving signal; 0: the card's

    static InputSignal Silence();
    // A sine, the same on both sides.
    static InputSignal Tone(double hertz, int32_t amplitude);
    // Heard once, from the first frame that the channel records after it was plugged in, and then
    // silence. It goes on with the card's clock while the channel is stopped.
    static InputSignal Run(std::vector<Frame> frames);
    // What leaves that output connector: at the same frame for cards on one clock, else at the same time.
    // From a digital output to a digital input it brings the sender's rate.
    static InputSignal Cable(unsigned card, Port output);

    // The same signal arriving at that rate on a digital input. It still gives one frame to each frame of
    // the card.
    InputSignal At(unsigned rate) &&;
};

// What arrives at a digital input.
struct DigitalSignal {
    unsigned Rate;  // Hz; 0: no signal
};

// A register as the card holds it, with the name of each of its fields.
struct RegisterField {
    std::string Name;
    unsigned Value;
};
struct RegisterView {
    // "card", "analog in", "digital in", "analog out", "digital out", "indirect" (the channel status
    // of the digital output), "mixer" (the eight gains)
    std::string File;
    unsigned Index;
    std::string Name;
    uint8_t Value;
    std::vector<RegisterField> Fields;
};

class Simulator {
public:
    // On a machine that another process has a simulator on, the cards and the time are as that one
    // made them. Otherwise `Cards` fresh cards come up, with every register at its power-up value.
    struct Options {
        unsigned Cards = 1;  // 0: leave the cards that are there already, or one on a new machine
        // Nothing: as it is there already, or real on a new machine.
        std::optional<TimeKind> Time = TimeKind::Stepped;
    };
    explicit Simulator(const Options& options);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    unsigned CardCount() const;

    // --- time -------------------------------------------------------------------------------
    TimeKind Time() const;
    int64_t NowMicroseconds() const;

    // Stepped only: moves the virtual clock on. Everything due on the way happens in order of its
    // time, and the driver has dealt with each completion before the clock goes on.
    void Advance(int64_t microseconds);

    // Stepped only: Advance to the next buffer end of any running channel of this process, at most
    // `limit` microseconds. False when none was due within it (the clock has moved by `limit`).
    bool AdvanceToNextCompletion(int64_t limit);

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
    // In place of what was plugged in before; at first nothing is, and a digital input has no signal. It
    // belongs to this process. A Cable may come from the same card.
    void PlugIn(unsigned card, Port port, InputSignal signal);
    // Rate on the digital input in Hz, in place of that of the signal plugged in, until another is: 0 no
    // signal, and silence whatever is plugged in; else what the receiver measures and, as a clock, runs
    // the card at.
    void SetDigitalInputRate(unsigned card, unsigned hertz);
    // An external clock source (0x20 link, 0x40 digital input, 0x60 PLL) that is not valid.
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

    OutputStatus Output(unsigned card, Port port) const;
    InputStatus Input(unsigned card, Port port) const;
    // The frames that the output channel took out of its buffers, bit for bit, since the process
    // began or the last ForgetAudio. They outlast the file that played them.
    std::vector<Frame> Played(unsigned card, Port port) const;
    // What left the card's connector from the channel's first frame to its last: all four mixer
    // sources at their gains, silence where the channel had no data. What channels of other processes
    // play on the card is not in it. A file opened anew adds to it without a gap.
    std::vector<Frame> Heard(unsigned card, Port port) const;
    void ForgetAudio();  // empties Played and Heard of every channel of this process

    bool ChannelClaimed(unsigned card, unsigned channel) const;  // by any process of the machine
    unsigned OpenFiles() const;                                  // of this process

    // --- trace and faults ---------------------------------------------------------------------
    std::vector<TraceEntry> Trace() const;
    void ClearTrace();
    void AddFault(const Fault& fault);
    void ClearFaults();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace simulator
