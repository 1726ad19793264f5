// Registering the card's kernel driver and the event sources with Windows NT. Only the registry is
// written; the files are in place already.
#pragma once

#include <windows.h>

namespace kestvox {

// The service for the next system start, and both event-log sources. A registry error code.
LONG InstallDriver();

// Disables the service; deletes nothing. A registry error code.
LONG RemoveDriver();

}  // namespace kestvox
