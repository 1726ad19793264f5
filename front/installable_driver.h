// The wave driver as an installable driver: what OpenDriver opens and messages are sent to.
#pragma once

namespace front {

// Closes what OpenDriver opened of the wave driver and nobody closed.
void CloseInstallableDrivers();

}  // namespace front
