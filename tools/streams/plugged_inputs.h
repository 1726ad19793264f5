// What a setup file plugs into the cards' inputs.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/machine/scene.h"
#include "tools/streams/input_feed.h"
#include "tools/streams/stream_runner.h"

namespace kestvox {

class PluggedInputs {
public:
    // CommandError when a file cannot be plugged in. The options outlive this, and this the scene.
    explicit PluggedInputs(const SceneOptions& options);

    // CommandError when there is no such card, or the cards are not simulated.
    void PlugIn(Scene& scene, StreamRunner& runner);

private:
    simulator::InputSignal SignalFor(const PluggedOption& input, StreamRunner& runner, bool digital);

    const SceneOptions& options_;
    std::vector<std::unique_ptr<InputFeed>> feeds_;
};

// What the options plug into that input device. Nothing: nothing, or a cable.
std::optional<std::string> PluggedIntoDevice(const SceneOptions& options, unsigned device);
bool HasCable(const SceneOptions& options, unsigned device);

}  // namespace kestvox
