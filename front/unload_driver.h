// What no call of the multimedia system does: the driver goes, and the process does not.
#pragma once

namespace front {

// Closes every device that is still open, sends the driver its last messages and unloads it. The next
// wave call loads it afresh. Not from inside a client's callback.
void UnloadWaveDriver();

}  // namespace front
