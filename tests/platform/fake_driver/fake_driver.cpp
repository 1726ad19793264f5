#include "tests/platform/fake_driver/fake_driver.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <cstdlib>
#include <deque>

using namespace fake_driver;

namespace {

// Initialised data, so that the tests see that a first load brings the file's contents along.
struct alignas(4096) SharedPage {
    DWORD Word;
};
__attribute__((section("shared"))) SharedPage shared = {41};

HINSTANCE givenHandle = nullptr;

void Report(LPCWSTR entry, UINT category, DWORD id) {
    const HANDLE source = RegisterEventSourceW(nullptr, entry);
    ReportEventW(source, EVENTLOG_INFORMATION_TYPE, static_cast<WORD>(category), id, nullptr, 0, 0, nullptr,
                 nullptr);
    DeregisterEventSource(source);
}

struct Client {
    bool* InUse;
    WAVEOPENDESC Description;
    DWORD Flags;
    std::deque<WAVEHDR*> Queue;
    bool RefusesClose = false;

    void Notify(DWORD message, void* parameter) const {
        DriverCallback(Description.dwCallback, HIWORD(Flags), reinterpret_cast<HDRVR>(Description.hWave),
                       message, Description.dwInstance, reinterpret_cast<DWORD_PTR>(parameter), 0);
    }
};

// Output and input differ in their message numbers only.
struct Side {
    LPCWSTR Source;
    UINT DeviceCount, Caps, Open, Close, Queue, Reset, Position;
    DWORD Opened, Closed, Done;
    bool InUse[2];
};
Side outSide = {OutSource,  WODM_GETNUMDEVS, WODM_GETDEVCAPS, WODM_OPEN, WODM_CLOSE, WODM_WRITE,
                WODM_RESET, WODM_GETPOS,     WOM_OPEN,        WOM_CLOSE, WOM_DONE,   {}};
Side inSide = {InSource,   WIDM_GETNUMDEVS, WIDM_GETDEVCAPS, WIDM_OPEN, WIDM_CLOSE, WIDM_ADDBUFFER,
               WIDM_RESET, WIDM_GETPOS,     WIM_OPEN,        WIM_CLOSE, WIM_DATA,   {}};

DWORD Open(Side& side, UINT device, Client** result, const WAVEOPENDESC& description, DWORD flags) {
    if (device == 0 && description.lpFormat->nChannels != 1) {
        return WAVERR_BADFORMAT;
    }
    if (flags & WAVE_FORMAT_QUERY) {
        return MMSYSERR_NOERROR;
    }
    if (side.InUse[device]) {
        return MMSYSERR_ALLOCATED;
    }
    side.InUse[device] = true;
    *result = new Client{&side.InUse[device], description, flags, {}, false};
    (*result)->Notify(side.Opened, nullptr);
    return MMSYSERR_NOERROR;
}

void Complete(const Side& side, Client& client) {
    WAVEHDR* const header = client.Queue.front();
    client.Queue.pop_front();
    header->dwFlags = (header->dwFlags & ~DWORD{WHDR_INQUEUE}) | WHDR_DONE;
    client.Notify(side.Done, header);
}

DWORD Close(const Side& side, Client* client) {
    if (client->RefusesClose || !client->Queue.empty()) {
        return WAVERR_STILLPLAYING;
    }
    client->Notify(side.Closed, nullptr);
    *client->InUse = false;
    delete client;
    return MMSYSERR_NOERROR;
}

DWORD ToClient(const Side& side, Client* client, UINT message, DWORD_PTR first) {
    if (message == side.Queue) {
        auto* const header = reinterpret_cast<WAVEHDR*>(first);
        header->dwFlags |= WHDR_INQUEUE;
        client->Queue.push_back(header);
    } else if (message == side.Reset) {
        while (!client->Queue.empty()) {
            Complete(side, *client);
        }
    } else if (message == side.Position) {
        reinterpret_cast<MMTIME*>(first)->u.sample = 1234;
    } else if (message == CompleteOldest) {
        Complete(side, *client);
    } else if (message == RefuseClose) {
        client->RefusesClose = first != 0;
    } else {
        return MMSYSERR_NOTSUPPORTED;
    }
    return MMSYSERR_NOERROR;
}

DWORD OnWaveMessage(Side& side, UINT device, UINT message, DWORD_PTR user, DWORD_PTR first,
                    DWORD_PTR second) {
    Report(side.Source, device, message);
    if (message == side.DeviceCount) {
        return 2;
    }
    if (message == side.Caps) {
        auto* const caps = reinterpret_cast<WAVEINCAPSW*>(first);
        wsprintfW(caps->szPname, u"Fake %u", device);
        caps->wChannels = static_cast<WORD>(device + 1);
        return MMSYSERR_NOERROR;
    }
    if (message == side.Open) {
        return Open(side, device, reinterpret_cast<Client**>(user), *reinterpret_cast<WAVEOPENDESC*>(first),
                    static_cast<DWORD>(second));
    }
    if (user == 0) {
        return MMSYSERR_INVALPARAM;
    }
    auto* const client = reinterpret_cast<Client*>(user);
    return message == side.Close ? Close(side, client) : ToClient(side, client, message, first);
}

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    givenHandle = module;
    Report(ModuleSource, reserved ? 1 : 0, reason);
    return reason != DLL_PROCESS_ATTACH || !std::getenv(RefuseVariable);
}

DWORD* WINAPI SharedWord() {
    return &shared.Word;
}

HINSTANCE WINAPI GivenHandle() {
    return givenHandle;
}

LRESULT CALLBACK DriverProc(DWORD_PTR id, HDRVR driver, UINT message, LPARAM, LPARAM) {
    Report(DriverSource, static_cast<UINT>(id), message);
    // What DRV_OPEN answers comes back as the driver's id.
    return driver && message == DRV_OPEN ? 77 : 1;
}

DWORD WINAPI wodMessage(UINT device, UINT message, DWORD_PTR user, DWORD_PTR first, DWORD_PTR second) {
    return OnWaveMessage(outSide, device, message, user, first, second);
}

DWORD WINAPI widMessage(UINT device, UINT message, DWORD_PTR user, DWORD_PTR first, DWORD_PTR second) {
    return OnWaveMessage(inSide, device, message, user, first, second);
}

}  // extern "C"
