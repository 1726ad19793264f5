#include "tests/interleaving/message.h"

namespace interleaving {
namespace {

struct Names {
    const char* Output;
    const char* Input;
};

// In the order of Message.
constexpr Names MessageNames[] = {
    {"open", "open"},     {"open-apart", "open-apart"}, {"write", "add"},     {"restart", "start"},
    {"pause", "stop"},    {"break", "break"},           {"reset", "reset"},   {"close", "close"},
    {"shut", "shut"},     {"position", "position"},     {"volume", "volume"}, {"write-three", "add-three"},
    {"suspend", nullptr}, {"resume", nullptr},          {"free", nullptr},    {"soft-reset", nullptr},
};

// In the order of Start.
constexpr const char* StartNames[] = {"fresh",  "ready", "playing", "paused", "asleep",
                                      "dozing", "idle",  "partly",  "ending"};

}  // namespace

std::string NameOf(const Act& act, const Setting& setting) {
    const Names& names = MessageNames[static_cast<int>(act.What)];
    if (IsOfDriver(act.What)) {
        return act.Program != 0 ? names.Output + std::string(".") + std::to_string(act.Program)
                                : names.Output;
    }
    const char* name = setting.Streams[act.Stream].Output ? names.Output : names.Input;
    return setting.Streams.size() > 1 ? name + std::to_string(act.Stream) : name;
}

std::vector<Message> PartsOf(Message message) {
    switch (message) {
    case Message::Shut:
        return {Message::Reset, Message::Close};
    case Message::WriteThree:
        return {Message::Write, Message::Write, Message::Write};
    default:
        return {message};
    }
}

const char* NameOf(Start start) {
    return StartNames[static_cast<int>(start)];
}

}  // namespace interleaving
