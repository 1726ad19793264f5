#include "tools/machine/scene.h"

#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "tools/command_error.h"
#include "tools/machine/host.h"
#include "tools/settings/settings_store.h"

namespace kestvox {
namespace {

struct SettingChange {
    const Setting* What;
    RegistryValue Value;
    std::optional<unsigned> Card;  // nothing: every card
    std::string Text;              // as the user wrote it
    unsigned HighestCard = 0;      // must be there
};

std::optional<unsigned> ParseCardNumber(const std::string& text) {
    unsigned card = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, card);
    return error == std::errc{} && parsed == end ? std::optional(card) : std::nullopt;
}

SettingChange ParseSettingChange(const std::string& text) {
    Assignment assignment = ParseAssignment(text);
    std::optional<unsigned> card;
    if (const size_t colon = assignment.Name.find(':'); colon != std::string::npos) {
        card = ParseCardNumber(assignment.Name.substr(0, colon));
        if (!card) {
            throw CommandError(text + ": '" + assignment.Name.substr(0, colon) + "' is not a card number");
        }
        assignment.Name.erase(0, colon + 1);
    }
    const Setting& setting = FindSetting(assignment.Name);
    return {&setting, ParseSetting(setting, assignment.Value), card, text, card.value_or(0)};
}

// As the configuration sheet stores it: the follower names its master and takes its clock from the link.
std::vector<SettingChange> ParseFollow(const std::string& text) {
    const size_t equals = text.find('=');
    const std::optional<unsigned> follower = ParseCardNumber(text.substr(0, equals));
    const std::optional<unsigned> master =
        equals == std::string::npos ? std::nullopt : ParseCardNumber(text.substr(equals + 1));
    if (!follower || !master || *follower == *master) {
        throw CommandError("follow " + text + ": must be B=A, two different card numbers (B follows A)");
    }
    std::vector<SettingChange> changes;
    for (const auto& [name, value] : {std::pair("Master", std::to_string(*master)), {"ClockSource", "32"}}) {
        const Setting& setting = FindSetting(name);
        changes.push_back({&setting, ParseSetting(setting, value), follower, "follow " + text,
                           std::max(*follower, *master)});
    }
    return changes;
}

// Of the cards that these options link. One of them would wait for its own clock.
void RequireNoCircle(const std::vector<std::string>& follows) {
    std::map<unsigned, unsigned> masters;
    for (const std::string& text : follows) {
        const size_t equals = text.find('=');
        masters[*ParseCardNumber(text.substr(0, equals))] = *ParseCardNumber(text.substr(equals + 1));
    }
    for (const auto& [follower, master] : masters) {
        unsigned card = master;
        for (size_t step = 0; step < masters.size() && card != follower && masters.contains(card); ++step) {
            card = masters[card];
        }
        if (card == follower) {
            throw CommandError("follow: card " + std::to_string(follower) +
                               " would follow itself, in a circle");
        }
    }
}

simulator::Fault RequireFault(const std::string& text) {
    const std::optional<simulator::Fault> fault = simulator::ParseFault(text);
    if (!fault) {
        throw CommandError("fault " + text + ": must be " + simulator::FaultSyntax());
    }
    return *fault;
}

}  // namespace

void EnterMachine(const std::string& name) {
    const char* inherited = std::getenv("KESTVOX_MACHINE");
    const std::string wanted = name.empty() && inherited ? inherited : name;
    if (!wanted.empty() && !JoinMachine(wanted)) {
        throw CommandError("machine '" + wanted + "': a name has letters, digits, '-' and '_', at most 64");
    }
}

// All that can be wrong is found before anything is stored.
Scene::Scene(const SceneOptions& options) {
    std::vector<SettingChange> changes;
    for (const std::string& text : options.Follows) {
        std::ranges::copy(ParseFollow(text), std::back_inserter(changes));
    }
    RequireNoCircle(options.Follows);
    for (const std::string& text : options.Settings) {
        changes.push_back(ParseSettingChange(text));
    }
    std::vector<simulator::Fault> faults;
    for (const std::string& text : options.Faults) {
        faults.push_back(RequireFault(text));
    }

    EnterMachine(options.Machine);
    PutUpCards(options);
    for (const SettingChange& change : changes) {
        RequireCard(change.HighestCard, change.Text);
    }
    for (const SettingChange& change : changes) {
        const unsigned first = change.Card.value_or(0);
        const unsigned end = change.Card ? first + 1 : CardCount();
        for (unsigned card = first; card < end; ++card) {
            WriteStoredSetting(card, *change.What, change.Value);
        }
    }
    for (size_t i = 0; i < faults.size(); ++i) {
        faults_.push_back({.Text = options.Faults[i], .Number = Cards().AddFault(faults[i])});
    }
}

std::vector<std::string> Scene::UnreachedFaults() const {
    std::vector<std::string> lines;
    for (const auto& [text, number] : faults_) {
        const simulator::FaultStatus status = Cards().StatusOf(number);
        if (!status.Struck) {
            lines.push_back("fault " + text + " did not come: there were " + std::to_string(status.Seen) +
                            " of the kind");
        }
    }
    return lines;
}

Scene::~Scene() {
    UnloadWaveDriver();
}

simulator::Simulator& Scene::Cards() {
    if (!simulator_) {
        throw CommandError(
            "this needs the simulated cards: put their winmm.dll and kestsim.dll beside the program");
    }
    return *simulator_;
}

unsigned Scene::CardCount() const {
    return simulator_ ? simulator_->CardCount() : std::max(waveOutGetNumDevs(), waveInGetNumDevs()) / 2;
}

int64_t Scene::NowMicroseconds() const {
    return simulator_ ? simulator_->NowMicroseconds() : int64_t{1000} * timeGetTime();
}

void Scene::PutUpCards(const SceneOptions& options) {
    if (CardsAreSimulated()) {
        simulator_ = std::make_unique<simulator::Simulator>(
            simulator::Simulator::Options{.Cards = options.Cards, .Time = options.Time});
        RequireWhatWasAskedFor(options);
    } else if (options.Cards != 0 || options.Time == simulator::TimeKind::Stepped ||
               !options.Faults.empty()) {
        Cards();
    }
}

// A machine that another process uses at this moment stays as that process made it.
void Scene::RequireWhatWasAskedFor(const SceneOptions& options) const {
    if (options.Cards != 0 && options.Cards != simulator_->CardCount()) {
        throw CommandError("the machine is in use and has another number of cards: " +
                           std::to_string(simulator_->CardCount()));
    }
    if (options.Time && *options.Time != simulator_->Time()) {
        throw CommandError(std::string("the machine is in use and runs in ") +
                           (simulator_->Time() == simulator::TimeKind::Real ? "real" : "stepped") + " time");
    }
}

void Scene::RequireCard(unsigned card, const std::string& what) const {
    if (card >= CardCount()) {
        throw CommandError(what + ": there is no card " + std::to_string(card) +
                           " (cards: " + std::to_string(CardCount()) + ")");
    }
}

void Scene::PlugIn(unsigned device, simulator::InputSignal signal) {
    if (device / 2 < CardCount() &&
        (HasSimulator() || signal.What != simulator::InputSignal::Kind::Silence)) {
        Cards().PlugIn(device / 2, device % 2 ? simulator::Port::Digital : simulator::Port::Analog,
                       std::move(signal));
    }
}

Assignment ParseAssignment(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw CommandError(text + ": must be NAME=VALUE");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace kestvox
