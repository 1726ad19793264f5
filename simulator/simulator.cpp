#include "simulator/simulator.h"

#include <algorithm>
#include <utility>

#include "simulator/card/card_power.h"
#include "simulator/card/register_file.h"
#include "simulator/card/register_map.h"
#include "simulator/clock/clock_control.h"
#include "simulator/clock/rate_measurement.h"
#include "simulator/machine/claims.h"
#include "simulator/machine/machine_state.h"
#include "simulator/machine/process_side.h"
#include "simulator/machine/timeline.h"
#include "simulator/requests/kernel_driver.h"
#include "simulator/requests/requests.h"

namespace simulator {

class Simulator::Impl {
public:
    explicit Impl(const Options& options) {
        AttachProcess(options.Cards, options.Time);
        if (options.Strict) {
            const host::MachineGuard guard;
            Machine().Strict = true;
        }
        Clock.emplace(Side);
        Driver.emplace(Side, *Clock);
        host::InstallDriver(&*Driver);
        host::InstallTimer(IsStepped() ? &*Clock : nullptr);
    }
    ~Impl() {
        host::InstallTimer(nullptr);
        host::InstallDriver(nullptr);
        Driver.reset();
        Clock.reset();
        DetachProcess();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // Runs `action` on the card with everything done that is due; what it set off is delivered.
    template <typename Action>
    auto With(unsigned card, Action action) {
        const auto run = [&] {
            const host::MachineGuard guard;
            MachineState& machine = Machine();
            const int64_t now = machine.Now();
            Side.CatchUp(now);
            return action(machine, machine.Cards[card], now);
        };
        if constexpr (std::is_void_v<decltype(run())>) {
            run();
            Side.Completions.Deliver();
        } else {
            auto answer = run();
            Side.Completions.Deliver();
            return answer;
        }
    }

    ProcessSide Side;
    std::optional<Timeline> Clock;
    std::optional<KernelDriver> Driver;

private:
    static bool IsStepped() {
        const host::MachineGuard guard;
        return Machine().Stepped;
    }
};

Simulator::Simulator(const Options& options) : impl_(std::make_unique<Impl>(options)) {}
Simulator::~Simulator() = default;

unsigned Simulator::CardCount() const {
    const host::MachineGuard guard;
    return Machine().CardCount;
}

bool Simulator::OthersAttached() const {
    const host::MachineGuard guard;
    return simulator::OthersAttached();
}

// --- time -----------------------------------------------------------------------------------------

TimeKind Simulator::Time() const {
    const host::MachineGuard guard;
    return Machine().Stepped ? TimeKind::Stepped : TimeKind::Real;
}

int64_t Simulator::NowMicroseconds() const {
    const host::MachineGuard guard;
    return Machine().Now() / 1000;
}

void Simulator::Advance(int64_t microseconds) {
    impl_->Clock->Advance(microseconds * 1000, false);
}

bool Simulator::AdvanceToNextCompletion(int64_t limit) {
    return impl_->Clock->Advance(limit * 1000, true);
}

// --- the scene ------------------------------------------------------------------------------------

std::u16string Simulator::RegistryPath(unsigned card) {
    return RegistryPathOf(card);
}

void Simulator::SetRequestTime(int64_t microseconds) {
    const host::MachineGuard guard;
    Machine().RequestTime = microseconds * 1000;
}

void Simulator::SetPresent(unsigned card, bool present) {
    impl_->With(card, [=](MachineState& machine, CardState& state, int64_t now) {
        if (state.Present != present) {
            state.Present = present;
            machine.Disturbed = true;
            PowerUp(machine, card, now);
        }
    });
}

void Simulator::PowerCycle(unsigned card) {
    impl_->With(card, [=, this](MachineState& machine, CardState&, int64_t now) {
        PowerUp(machine, card, now);
        impl_->Side.NotePowerCycle(card, now);
    });
}

void Simulator::SetIdentityPage(unsigned card, std::span<const uint8_t, 128> page) {
    impl_->With(card, [&](MachineState&, CardState& state, int64_t) {
        std::copy(page.begin(), page.end(), state.IdentityPage.begin());
    });
}

void Simulator::SetVersionPage(unsigned card, std::span<const uint8_t, 128> page) {
    impl_->With(card, [&](MachineState&, CardState& state, int64_t) {
        std::copy(page.begin(), page.end(), state.VersionPage.begin());
    });
}

void Simulator::SetPciRegister(unsigned card, unsigned offset, std::span<const uint8_t> bytes) {
    impl_->With(card, [&](MachineState&, CardState& state, int64_t) {
        for (size_t i = 0; i < bytes.size() && offset + i < state.PciConfig.size(); ++i) {
            state.PciConfig[offset + i] = bytes[i];
        }
    });
}

namespace {

void ClockDigitalInput(CardState& card, const InputSignal& signal) {
    card.DigitalInputRate = signal.Rate;
    card.DigitalInputCable = signal.Card;
    if (signal.What == InputSignal::Kind::Cable && signal.Output == Port::Digital) {
        card.DigitalInputClocking = DigitalClocking::Cabled;
    } else {
        card.DigitalInputClocking = signal.Rate != 0 ? DigitalClocking::Fixed : DigitalClocking::WithCard;
    }
}

}  // namespace

void Simulator::PlugIn(unsigned card, Port port, InputSignal signal) {
    impl_->With(card, [&](MachineState& machine, CardState& state, int64_t now) {
        if (port == Port::Digital) {
            ClockDigitalInput(state, signal);
            ResolveClocks(machine, now);
        }
        impl_->Side.Cables().PlugIn(card, static_cast<unsigned>(port), std::move(signal));
    });
}

void Simulator::SetDigitalInputRate(unsigned card, unsigned hertz) {
    impl_->With(card, [=](MachineState& machine, CardState& state, int64_t now) {
        state.DigitalInputClocking = DigitalClocking::Fixed;
        state.DigitalInputRate = hertz;
        ResolveClocks(machine, now);
    });
}

void Simulator::SetClockBroken(unsigned card, unsigned source, bool broken) {
    impl_->With(card, [=](MachineState& machine, CardState& state, int64_t now) {
        state.Broken[(source & SourceMask) >> SourceShift] = broken;
        ResolveClocks(machine, now);
    });
}

void Simulator::SetDrift(unsigned card, int partsPerMillion) {
    impl_->With(card, [=](MachineState& machine, CardState& state, int64_t now) {
        state.Drift = std::clamp(partsPerMillion, -SampleClock::MaxDrift, SampleClock::MaxDrift);
        ResolveClocks(machine, now);
    });
}

// --- what the card was told and what it did -----------------------------------------------------------

namespace {

uint8_t ReadNamed(MachineState& machine, unsigned card, RegisterFile file, unsigned channel, unsigned index,
                  int64_t now) {
    const RegisterDefinition* definition = FindRegister(file, channel, index);
    return definition ? ReadRegisterValue(machine, card, channel, *definition, now) : 0;
}

}  // namespace

uint8_t Simulator::CardRegister(unsigned card, unsigned index) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) {
        return ReadNamed(machine, card, RegisterFile::Card, 0, index, now);
    });
}

uint8_t Simulator::OutputRegister(unsigned card, Port port, unsigned index) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) {
        return ReadNamed(machine, card, RegisterFile::Port, FirstOutput + static_cast<unsigned>(port), index,
                         now);
    });
}

uint8_t Simulator::InputRegister(unsigned card, Port port, unsigned index) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) {
        return ReadNamed(machine, card, RegisterFile::Port, static_cast<unsigned>(port), index, now);
    });
}

uint8_t Simulator::IndirectRegister(unsigned card, unsigned index) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) {
        return ReadNamed(machine, card, RegisterFile::Indirect, 0, index, now);
    });
}

unsigned Simulator::MixerGain(unsigned card, unsigned index) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) -> unsigned {
        return ReadNamed(machine, card, RegisterFile::Mixer, 0, index, now);
    });
}

std::vector<RegisterView> Simulator::Registers(unsigned card) const {
    return impl_->With(card, [=](MachineState& machine, CardState&, int64_t now) {
        return ViewRegisters(machine, card, now);
    });
}

unsigned Simulator::SampleRate(unsigned card) const {
    return impl_->With(card,
                       [](MachineState&, CardState& state, int64_t) -> unsigned { return state.Clock.Rate; });
}

uint64_t Simulator::ClockFrame(unsigned card) const {
    return impl_->With(card, [](MachineState&, CardState& state, int64_t now) {
        const uint64_t frame = state.Clock.FramesAt(now);
        return frame - std::min<uint64_t>(frame, state.Lag);
    });
}

DigitalSignal Simulator::DigitalInput(unsigned card) const {
    return impl_->With(card, [=](MachineState& machine, CardState& state, int64_t now) {
        DigitalSignal signal{DigitalInputRate(machine, card, now), std::nullopt};
        if (state.DigitalInputClocking == DigitalClocking::Cabled && signal.Rate != 0) {
            signal.Status = simulator::SentStatus(machine.Cards[state.DigitalInputCable]);
        }
        return signal;
    });
}

std::optional<ChannelStatus> Simulator::SentStatus(unsigned card) const {
    return impl_->With(card,
                       [](MachineState&, CardState& state, int64_t) { return simulator::SentStatus(state); });
}

namespace {

Gaps GapsOf(const ChannelTally& tally) {
    return {.Count = tally.Gaps.Count, .Longest = tally.Gaps.Longest, .First = tally.Gaps.First};
}

}  // namespace

OutputStatus Simulator::Output(unsigned card, Port port) const {
    return impl_->With(card, [=](MachineState&, CardState& state, int64_t) {
        const ChannelTally& tally = state.Channels[FirstOutput + static_cast<unsigned>(port)].Tally;
        return OutputStatus{.Started = tally.Started,
                            .StartFrame = tally.StartFrame,
                            .FramesPlayed = tally.FramesMoved,
                            .FramesSilent = tally.FramesMissed,
                            .Underruns = GapsOf(tally),
                            .BuffersInFlight = tally.BuffersInFlight,
                            .MostInFlight = tally.MostInFlight,
                            .BuffersFinished = tally.BuffersFinished,
                            .BuffersFlushed = tally.BuffersFlushed};
    });
}

InputStatus Simulator::Input(unsigned card, Port port) const {
    return impl_->With(card, [=](MachineState&, CardState& state, int64_t) {
        const ChannelTally& tally = state.Channels[static_cast<unsigned>(port)].Tally;
        return InputStatus{.Started = tally.Started,
                           .StartFrame = tally.StartFrame,
                           .FramesRecorded = tally.FramesMoved,
                           .FramesDropped = tally.FramesMissed,
                           .Overruns = GapsOf(tally),
                           .BuffersInFlight = tally.BuffersInFlight,
                           .MostInFlight = tally.MostInFlight,
                           .BuffersFinished = tally.BuffersFinished,
                           .BuffersFlushed = tally.BuffersFlushed};
    });
}

void Simulator::SendPlayed(unsigned card, Port port, FrameSink sink) {
    impl_->With(card, [&](MachineState&, CardState&, int64_t) {
        impl_->Side.Player(card).Output(port).SendPlayed(std::move(sink));
    });
}

void Simulator::SendHeard(unsigned card, Port port, FrameSink sink) {
    impl_->With(card, [&](MachineState&, CardState&, int64_t) {
        impl_->Side.Player(card).Output(port).SendHeard(std::move(sink));
    });
}

void Simulator::KeepAudio() {
    impl_->With(0, [this](MachineState&, CardState&, int64_t) {
        for (unsigned card = 0; card < MaxCards; ++card) {
            impl_->Side.Player(card).KeepAudio();
        }
    });
}

std::vector<Frame> Simulator::Played(unsigned card, Port port) const {
    return impl_->With(card, [&](MachineState&, CardState&, int64_t) {
        return impl_->Side.Player(card).Output(port).Played();
    });
}

std::vector<Frame> Simulator::Heard(unsigned card, Port port) const {
    return impl_->With(card, [&](MachineState&, CardState&, int64_t) {
        return impl_->Side.Player(card).Output(port).Heard();
    });
}

void Simulator::ForgetAudio() {
    impl_->With(0, [this](MachineState&, CardState&, int64_t) {
        for (unsigned card = 0; card < MaxCards; ++card) {
            impl_->Side.Player(card).ForgetAudio();
        }
    });
}

bool Simulator::ChannelClaimed(unsigned card, unsigned channel) const {
    return impl_->With(card, [=](MachineState&, CardState& state, int64_t) {
        return channel < ChannelCount && IsClaimed(state.Channels[channel]);
    });
}

unsigned Simulator::OpenFiles() const {
    const host::MachineGuard guard;
    return impl_->Side.OpenFiles();
}

// --- trace and faults -----------------------------------------------------------------------------------

HeaderEvent Simulator::NoteHeader(HeaderEvent::Kind what, unsigned card, uint32_t channel,
                                  const void* header) const {
    return {.What = what,
            .Microseconds = NowMicroseconds(),
            .Card = card,
            .Channel = channel,
            .Header = header,
            .Process = host::CurrentProcess().Id,
            .Thread = host::CurrentThreadId(),
            .MutexWaits = host::SharedMutexWaits()};
}

uint64_t Simulator::RequestCount() const {
    return impl_->Side.Trace.Requests();
}
void Simulator::SendTrace(TraceSink sink) {
    impl_->Side.Trace.Send(std::move(sink));
}
void Simulator::KeepTrace() {
    impl_->Side.Trace.Keep();
}
std::vector<TraceEntry> Simulator::Trace() const {
    return impl_->Side.Trace.Entries();
}
void Simulator::ClearTrace() {
    impl_->Side.Trace.Clear();
}

unsigned Simulator::AddFault(const Fault& fault) {
    const host::MachineGuard guard;
    return impl_->Side.Faults.Add(fault);
}

FaultStatus Simulator::StatusOf(unsigned fault) const {
    const host::MachineGuard guard;
    return impl_->Side.Faults.StatusOf(fault);
}

void Simulator::ClearFaults() {
    const host::MachineGuard guard;
    impl_->Side.Faults.Clear();
}

}  // namespace simulator
