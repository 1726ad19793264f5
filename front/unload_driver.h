// Unloading the wave driver before the process ends, for which the multimedia system has no call.
#pragma once

namespace front {

// Closes every device that is still open, sends the driver its last messages and unloads it. The next
// wave call loads it afresh. Not from inside a client's callback.
void UnloadWaveDriver();

}  // namespace front
