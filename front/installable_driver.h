// The wave driver as an installable driver, which programs open with OpenDriver and send messages to.
#pragma once

namespace front {

// Closes every instance of the wave driver that OpenDriver has opened and that is still open.
void CloseInstallableDrivers();

}  // namespace front
