// What no correct driver does, whatever its clients do. A simulator that is told to be strict ends the
// program at once, with one line that names the rule. The machine's lock is held by the caller of everything
// here.
#pragma once

#include "simulator/card/register_file.h"
#include "simulator/requests/requests.h"

namespace simulator {

// Before the request that they are named after is carried out.
void CheckArm(const RequestCall& call);
void CheckRegisterRead(const RequestCall& call, const RegisterDefinition& definition);
void CheckRegisterWrite(const RequestCall& call, const RegisterDefinition& definition, uint8_t value,
                        uint8_t mask);

}  // namespace simulator
