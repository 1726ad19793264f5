#include "front/header_watch.h"

#include "front/client_callback.h"
#include "front/host.h"

namespace front {

WaveOpenRequest HeaderWatch::DriverRequest() const {
    return WithCallback(client_, reinterpret_cast<DWORD_PTR>(&HeaderWatch::DriverCalls), this);
}

// The client is told last: it may take the buffer away then. One that looks at the header's flags may do so
// before, and is quick if it can.
void CALLBACK HeaderWatch::DriverCalls(HDRVR, DWORD message, DWORD_PTR watch, DWORD_PTR first,
                                       DWORD_PTR second) {
    const auto& self = *reinterpret_cast<const HeaderWatch*>(watch);
    if (message == WOM_DONE || message == WIM_DATA) {
        host::NoteHeader(host::HeaderEvent::Returned, self.device_.Direction, self.device_.Id,
                         reinterpret_cast<const WAVEHDR*>(first));
    }
    TellClient(self.device_, self.client_, message, first, second);
}

}  // namespace front
