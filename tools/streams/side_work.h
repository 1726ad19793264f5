// What goes on beside the streams while they run: files that are written, or read, as the sound goes.
#pragma once

#include <string>

namespace kestvox {

// Of the runner's thread.
class SideWork {
public:
    virtual ~SideWork() = default;

    // Does what has come up since the last time.
    virtual void Advance() = 0;

    // What went wrong first, in one line, or empty. It ends the run.
    virtual std::string Problem() const = 0;
};

}  // namespace kestvox
