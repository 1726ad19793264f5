#include "stream/notify_client.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

// Exported by the multimedia system; not every SDK declares it.
// NOLINTNEXTLINE(readability-redundant-declaration)
extern "C" BOOL WINAPI DriverCallback(DWORD_PTR callback, DWORD flags, HDRVR device, DWORD message,
                                      DWORD_PTR user, DWORD_PTR param1, DWORD_PTR param2);

namespace kestvox {

void NotifyClient(StreamInstance* stream, UINT message, DWORD_PTR param) {
    const DWORD type = HIWORD(stream->OpenFlags.load());
    if (type == 0) {
        return;
    }
    DriverCallback(stream->Callback, type, reinterpret_cast<HDRVR>(stream->WaveHandle), message,
                   stream->CallbackInstance, param, 0);
}

}  // namespace kestvox
