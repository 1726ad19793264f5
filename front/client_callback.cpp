#include "front/client_callback.h"

#include "front/driver_callback.h"

namespace front {

WaveOpenRequest WithCallback(WaveOpenRequest client, DWORD_PTR callback, const void* instance) {
    client.Callback = callback;
    client.Instance = reinterpret_cast<DWORD_PTR>(instance);
    client.Flags = (client.Flags & ~DWORD{CALLBACK_TYPEMASK}) | CALLBACK_FUNCTION;
    return client;
}

void TellClient(const Device& device, const WaveOpenRequest& client, DWORD message, DWORD_PTR first,
                DWORD_PTR second) {
    DriverCallback(client.Callback, (client.Flags & CALLBACK_TYPEMASK) >> 16,
                   reinterpret_cast<HDRVR>(device.Handle), message, client.Instance, first, second);
}

}  // namespace front
