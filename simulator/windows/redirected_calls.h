// Which calls of an attached module lead where.
#pragma once

#include <span>
#include <string>

#include "simulator/windows/import_table.h"

namespace simulator::windows {

std::span<const Redirection> RedirectedCalls();

// One more, from now on; in place of the system's function where the call can be made to fail.
void AddRedirection(const Redirection& redirection);

// The n-th coming call of that function fails; false when no such call can be made to fail.
bool ArmFailure(const std::string& function, unsigned nth);
bool AnyFailureIsArmed();
void DisarmFailures();

}  // namespace simulator::windows
