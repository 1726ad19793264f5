// A command that cannot do what it was asked to.
#pragma once

#include <stdexcept>

namespace kestvox {

// The text is one line that names what was wrong and why; the command prints it on standard error and
// ends with status 2.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace kestvox
