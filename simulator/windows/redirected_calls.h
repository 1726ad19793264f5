// Which calls of an attached module lead where.
#pragma once

#include <span>
#include <string>

#include "simulator/windows/import_table.h"

namespace simulator::windows {

std::span<const Redirection> RedirectedCalls();

// The n-th coming call of that function fails; false when no such call can be made to fail.
bool ArmFailure(const std::string& function, unsigned nth);
void DisarmFailures();

}  // namespace simulator::windows
