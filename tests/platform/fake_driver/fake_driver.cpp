#include "tests/platform/fake_driver/fake_driver.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

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

bool inUse[2] = {};

DWORD Open(UINT device, Client** result, const WAVEOPENDESC& description, DWORD flags) {
    if (device == 0 && description.lpFormat->nChannels != 1) {
        return WAVERR_BADFORMAT;
    }
    if (flags & WAVE_FORMAT_QUERY) {
        return MMSYSERR_NOERROR;
    }
    if (inUse[device]) {
        return MMSYSERR_ALLOCATED;
    }
    inUse[device] = true;
    *result = new Client{&inUse[device], description, flags, {}, false};
    (*result)->Notify(WOM_OPEN, nullptr);
    return MMSYSERR_NOERROR;
}

void Complete(Client& client) {
    WAVEHDR* const header = client.Queue.front();
    client.Queue.pop_front();
    header->dwFlags = (header->dwFlags & ~DWORD{WHDR_INQUEUE}) | WHDR_DONE;
    client.Notify(WOM_DONE, header);
}

DWORD Close(Client* client) {
    if (client->RefusesClose || !client->Queue.empty()) {
        return WAVERR_STILLPLAYING;
    }
    client->Notify(WOM_CLOSE, nullptr);
    *client->InUse = false;
    delete client;
    return MMSYSERR_NOERROR;
}

DWORD ToClient(Client* client, UINT message, DWORD_PTR first) {
    switch (message) {
    case WODM_CLOSE:
        return Close(client);
    case WODM_WRITE: {
        auto* const header = reinterpret_cast<WAVEHDR*>(first);
        header->dwFlags |= WHDR_INQUEUE;
        client->Queue.push_back(header);
        return MMSYSERR_NOERROR;
    }
    case WODM_RESET:
        while (!client->Queue.empty()) {
            Complete(*client);
        }
        return MMSYSERR_NOERROR;
    case CompleteOldest:
        Complete(*client);
        return MMSYSERR_NOERROR;
    case RefuseClose:
        client->RefusesClose = first != 0;
        return MMSYSERR_NOERROR;
    default:
        return MMSYSERR_NOTSUPPORTED;
    }
}

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    givenHandle = module;
    Report(ModuleSource, reserved ? 1 : 0, reason);
    return TRUE;
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
    Report(OutSource, device, message);
    if (message == WODM_GETNUMDEVS) {
        return 2;
    }
    if (message == WODM_OPEN) {
        return Open(device, reinterpret_cast<Client**>(user), *reinterpret_cast<WAVEOPENDESC*>(first),
                    static_cast<DWORD>(second));
    }
    return user == 0 ? MMSYSERR_INVALPARAM : ToClient(reinterpret_cast<Client*>(user), message, first);
}

DWORD WINAPI widMessage(UINT, UINT message, DWORD_PTR, DWORD_PTR, DWORD_PTR) {
    return message == WIDM_GETNUMDEVS ? 2 : MMSYSERR_NOTSUPPORTED;
}

}  // extern "C"
