// The computer that a command works on: the cards, how they are set up, and what goes wrong with them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/simulator.h"
#include "tools/machine/setup_file.h"

namespace kestvox {

// As written on the command line.
struct SceneOptions {
    std::string Machine;                      // empty: the one that the environment names, or a private one
    unsigned Cards = 0;                       // 0: those that the machine has, one on a new machine
    std::optional<simulator::TimeKind> Time;  // nothing: as it is on the machine, real on a new one
    std::vector<std::string> Settings;        // [CARD:]NAME=VALUE
    std::vector<std::string> Follows;         // B=A: card B takes its clock from card A
    std::vector<std::string> Faults;
    std::vector<PluggedOption> Inputs;  // of the setup file; a later one takes an earlier one's place
    std::vector<CableOption> Cables;    // ... after the inputs
};

// Joins the machine of that name, or stays where it is when the name is empty. CommandError for a bad name.
void EnterMachine(const std::string& name);

class Scene {
public:
    // Puts up the cards and stores the settings, all before the driver is loaded by the first wave
    // call. CommandError, with nothing stored, when an option cannot be followed.
    explicit Scene(const SceneOptions& options);
    // Unloads the driver, then takes the cards away. No wave device may be in use any more.
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Whether the cards are simulated. On a computer's own cards there is nothing to set up but their stored
    // settings, and what they do is not to be seen.
    bool HasSimulator() const { return simulator_ != nullptr; }
    // CommandError when the cards are the computer's own.
    simulator::Simulator& Cards();
    const simulator::Simulator& Cards() const { return const_cast<Scene*>(this)->Cards(); }

    unsigned CardCount() const;
    bool OthersAreOnTheMachine() const { return simulator_ && simulator_->OthersAttached(); }
    int64_t NowMicroseconds() const;  // of the cards' time, or the timer's

    // The faults that were asked for and have not struck, one line each.
    std::vector<std::string> UnreachedFaults() const;

    // CommandError when there is no card of that number; `what` begins the message.
    void RequireCard(unsigned card, const std::string& what) const;

    // Plugs the signal into an input device's connector. Does nothing when there is no such device:
    // opening it will tell.
    void PlugIn(unsigned device, simulator::InputSignal signal);

private:
    void PutUpCards(const SceneOptions& options);
    void RequireWhatWasAskedFor(const SceneOptions& options) const;

    struct Fault {
        std::string Text;
        unsigned Number;
    };

    std::unique_ptr<simulator::Simulator> simulator_;
    std::vector<Fault> faults_;
};

// An assignment NAME=VALUE. CommandError when there is no '='.
struct Assignment {
    std::string Name;
    std::string Value;
};
Assignment ParseAssignment(const std::string& text);

}  // namespace kestvox
