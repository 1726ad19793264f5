#include "tools/streams/plugged_inputs.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "tools/command_error.h"

namespace kestvox {
namespace {

bool IsAt(const simulator::Connector& connector, unsigned device) {
    return connector.Card == device / 2 && (connector.Port == simulator::Port::Digital) == (device % 2 == 1);
}

// A file is looked at before anything is set up, and read for each input that it is plugged into.
void RequireFile(const PluggedOption& input) {
    if (simulator::ParseSignal(input.What)) {
        return;
    }
    std::error_code error;
    const std::filesystem::file_status there = std::filesystem::status(input.What, error);
    if (input.What == "-" || (exists(there) && !is_regular_file(there) && !is_directory(there))) {
        throw CommandError(input.Place + ": " + input.What +
                           ": is read more than once, so that it must be a file");
    }
    try {
        const InputFeed feed(input.What);
    } catch (const CommandError& refused) {
        throw CommandError(input.Place + ": " + refused.what());
    }
}

}  // namespace

PluggedInputs::PluggedInputs(const SceneOptions& options) : options_(options) {
    for (const PluggedOption& input : options.Inputs) {
        RequireFile(input);
    }
}

// Each input hears a file from its beginning, and a digital one at the file's rate.
simulator::InputSignal PluggedInputs::SignalFor(const PluggedOption& input, StreamRunner& runner,
                                                bool digital) {
    if (std::optional<simulator::InputSignal> signal = simulator::ParseSignal(input.What)) {
        return std::move(*signal);
    }
    InputFeed& feed = *feeds_.emplace_back(std::make_unique<InputFeed>(input.What));
    runner.Add(feed);
    return digital ? feed.Signal().At(feed.Format().nSamplesPerSec) : feed.Signal();
}

// What is plugged in later takes the place of what was there.
void PluggedInputs::PlugIn(Scene& scene, StreamRunner& runner) {
    for (const PluggedOption& input : options_.Inputs) {
        if (input.Where) {
            scene.RequireCard(input.Where->Card, input.Place);
        }
        for (unsigned device = 0; device < 2 * scene.CardCount(); ++device) {
            if (!input.Where || IsAt(*input.Where, device)) {
                scene.PlugIn(device, SignalFor(input, runner, device % 2 == 1));
            }
        }
    }
    for (const auto& [ends, place] : options_.Cables) {
        scene.RequireCard(std::max(ends.Output.Card, ends.Input.Card), place);
        scene.Cards().PlugIn(ends.Input.Card, ends.Input.Port,
                             simulator::InputSignal::Cable(ends.Output.Card, ends.Output.Port));
    }
}

std::optional<std::string> PluggedIntoDevice(const SceneOptions& options, unsigned device) {
    std::optional<std::string> plugged;
    for (const PluggedOption& input : options.Inputs) {
        if (!input.Where || IsAt(*input.Where, device)) {
            plugged = input.What;
        }
    }
    return HasCable(options, device) ? std::nullopt : plugged;
}

bool HasCable(const SceneOptions& options, unsigned device) {
    return std::ranges::any_of(options.Cables,
                               [=](const CableOption& cable) { return IsAt(cable.Ends.Input, device); });
}

}  // namespace kestvox
