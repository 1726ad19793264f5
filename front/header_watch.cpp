#include "front/header_watch.h"

#include "front/driver_callback.h"
#include "front/host.h"

namespace front {

WaveOpenRequest HeaderWatch::DriverRequest() const {
    WaveOpenRequest request = client_;
    request.Callback = reinterpret_cast<DWORD_PTR>(&HeaderWatch::DriverCalls);
    request.Instance = reinterpret_cast<DWORD_PTR>(this);
    request.Flags = (client_.Flags & ~DWORD{CALLBACK_TYPEMASK}) | CALLBACK_FUNCTION;
    return request;
}

// The client is told last: it may take the buffer away then. One that looks at the header's flags may do so
// before, and is quick if it can.
void CALLBACK HeaderWatch::DriverCalls(HDRVR, DWORD message, DWORD_PTR watch, DWORD_PTR first,
                                       DWORD_PTR second) {
    const auto& self = *reinterpret_cast<const HeaderWatch*>(watch);
    const WaveOpenRequest& client = self.client_;
    if (message == WOM_DONE || message == WIM_DATA) {
        host::NoteHeader(host::HeaderEvent::Returned, self.device_.Direction, self.device_.Id,
                         reinterpret_cast<const WAVEHDR*>(first));
    }
    DriverCallback(client.Callback, (client.Flags & CALLBACK_TYPEMASK) >> 16,
                   reinterpret_cast<HDRVR>(self.device_.Handle), message, client.Instance, first, second);
}

}  // namespace front
