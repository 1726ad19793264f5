#include <cstddef>
#include <cstring>

#include "card/card_identity.h"
#include "card/requests.h"
#include "stream/clock_group.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

// A field of the configuration space and its place in what is saved of it.
struct PciField {
    DWORD Offset;
    DWORD Size;
    size_t SavedAt;
};

constexpr PciField DeviceIds = {0x00, 4, offsetof(PciConfiguration, DeviceIds)};
constexpr PciField SubsystemIds = {0x2C, 4, offsetof(PciConfiguration, SubsystemIds)};
constexpr PciField ClassAndRevision = {0x08, 4, offsetof(PciConfiguration, ClassAndRevision)};
constexpr PciField Command = {0x04, 2, offsetof(PciConfiguration, Command)};
constexpr PciField LatencyTimer = {0x0D, 1, offsetof(PciConfiguration, LatencyTimer)};
constexpr PciField BaseAddress = {0x10, 4, offsetof(PciConfiguration, BaseAddress)};
constexpr PciField InterruptLine = {0x3C, 1, offsetof(PciConfiguration, InterruptLine)};

constexpr PciField SaveOrder[] = {DeviceIds,    SubsystemIds, ClassAndRevision, Command,
                                  LatencyTimer, BaseAddress,  InterruptLine};
constexpr PciField Identity[] = {DeviceIds, SubsystemIds, ClassAndRevision};
constexpr PciField Resources[] = {LatencyTimer, BaseAddress, InterruptLine};
constexpr PciField Enabling[] = {Command};

BYTE* Saved(StreamInstance* stream, const PciField& field) {
    return reinterpret_cast<BYTE*>(&stream->SavedPciConfig) + field.SavedAt;
}

template <unsigned Count>
BOOL Save(StreamInstance* stream, const PciField (&fields)[Count]) {
    for (const PciField& field : fields) {
        if (!ReadPciConfig(stream->Device, field.Offset, Saved(stream, field), field.Size)) {
            return FALSE;
        }
    }
    return TRUE;
}

template <unsigned Count>
BOOL Write(StreamInstance* stream, const PciField (&fields)[Count]) {
    for (const PciField& field : fields) {
        if (!WritePciConfig(stream->Device, field.Offset, Saved(stream, field), field.Size)) {
            return FALSE;
        }
    }
    return TRUE;
}

// Whether the card still (or again) reads as it was saved.
template <unsigned Count>
BOOL Verify(StreamInstance* stream, const PciField (&fields)[Count]) {
    for (const PciField& field : fields) {
        DWORD current = 0;
        if (!ReadPciConfig(stream->Device, field.Offset, &current, field.Size) ||
            memcmp(&current, Saved(stream, field), field.Size) != 0) {
            return FALSE;
        }
    }
    return TRUE;
}

MMRESULT ResultOf(BOOL succeeded) {
    return succeeded ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

}  // namespace

MMRESULT SavePciConfiguration(StreamInstance* stream) {
    stream->JustReset = 0;
    return ResultOf(Save(stream, SaveOrder) && ReleaseChannel(stream->Device));
}

MMRESULT RestorePciConfiguration(StreamInstance* stream) {
    stream->JustReset = 0;
    // The card must answer to its address before it is switched on.
    const BOOL restored = Verify(stream, Identity) && Write(stream, Resources) && Verify(stream, Resources) &&
                          Write(stream, Enabling) && Verify(stream, Enabling);
    if (!restored) {
        return MMSYSERR_ERROR;
    }
    ReadCardIdentity(stream->Device, *stream->Card);
    InitCardAgain(stream->Device, *stream->Card);
    return ResultOf(AcquireChannel(stream->Device));
}

}  // namespace kestvox
