// Which calls of an attached module lead where.
#pragma once

#include <span>
#include <string>

#include "simulator/windows/import_table.h"

namespace simulator::windows {

std::span<const Redirection> RedirectedCalls();

// Modules attached from now on call the replacement. Where the call can be made to fail, a call that does not
// fail goes to the replacement in place of the system's function.
void AddRedirection(const Redirection& redirection);

// The n-th call of that function from now on fails. False when calls of that function cannot be made to fail.
bool ArmFailure(const std::string& function, unsigned nth);
bool AnyFailureIsArmed();
void DisarmFailures();

}  // namespace simulator::windows
