// The control messages that interleave, by name.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace interleaving {

// Of a stream, up to WriteThree, or of the driver as a whole.
enum class Message {
    Open,
    OpenApart,  // at another rate
    Write,      // input: add
    Start,      // output: restart
    Stop,       // output: pause
    Break,
    Reset,
    Close,
    Shut,  // reset, then close
    Position,
    Volume,
    WriteThree,
    Suspend,
    Resume,
    Free,
    SoftReset,  // of the first card, as the sheet asks for it
};

// An act of more than one message has others in between.
std::vector<Message> PartsOf(Message message);

inline bool IsOfDriver(Message message) {
    return message >= Message::Suspend;
}

struct StreamPlan {
    bool Output;
    unsigned Card;
    unsigned Port;         // 0 analog, 1 digital
    unsigned Program = 0;  // whose stream it is

    UINT Device() const { return Card * 2 + Port; }
    unsigned Channel() const { return Port + (Output ? 2 : 0); }
};

// What takes part: cards, and the streams on them.
struct Setting {
    const char* Name;
    unsigned Cards;
    bool Linked;          // card 1 follows card 0
    bool LockToPlayback;  // inputs start with the outputs
    std::vector<StreamPlan> Streams;
};

// One message to one stream of a setting, or to the driver of one of its programs.
struct Act {
    Message What;
    unsigned Stream;       // of no meaning for a message to the driver
    unsigned Program = 0;  // who sends it
};

// "pause", or "pause1" where there are more streams than one, "suspend", or "suspend.1" for another program.
std::string NameOf(const Act& act, const Setting& setting);

// How the streams are when the first message is sent.
enum class Start {
    Fresh,    // open, nothing handed in
    Ready,    // outputs paused and inputs stopped before they ever ran, with headers
    Playing,  // a loop, and more after it
    Paused,   // the same, paused or stopped
    Asleep,   // played, and suspended
    Dozing,   // suspended before they ran, and started since
    Idle,     // nothing is open
    Partly,   // the first stream plays, the others are not open
    Ending,   // playing, and the first header is about to come back
};
const char* NameOf(Start start);

}  // namespace interleaving
