// The one way in which a stream calls its client.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Sends a WOM_ or WIM_ message through the system's DriverCallback, on the calling thread. Nothing
// happens for a client without a callback.
void NotifyClient(StreamInstance* stream, UINT message, DWORD_PTR param);

}  // namespace kestvox
