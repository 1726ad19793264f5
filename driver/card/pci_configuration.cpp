#include "card/pci_configuration.h"

#include <cstddef>
#include <cstring>

#include "card/requests.h"

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

using Access = BOOL (*)(CardHandle* handle, const PciField& field, BYTE* saved);

// The fields one after the other, up to the first that fails.
template <unsigned Count>
BOOL ForEach(CardHandle* handle, PciConfiguration* saved, const PciField (&fields)[Count], Access access) {
    for (const PciField& field : fields) {
        if (!access(handle, field, reinterpret_cast<BYTE*>(saved) + field.SavedAt)) {
            return FALSE;
        }
    }
    return TRUE;
}

BOOL Read(CardHandle* handle, const PciField& field, BYTE* saved) {
    return ReadPciConfig(handle, field.Offset, saved, field.Size);
}

BOOL Write(CardHandle* handle, const PciField& field, BYTE* saved) {
    return WritePciConfig(handle, field.Offset, saved, field.Size);
}

// Whether the card still (or again) reads as it was saved.
BOOL Verify(CardHandle* handle, const PciField& field, BYTE* saved) {
    DWORD current = 0;
    return ReadPciConfig(handle, field.Offset, &current, field.Size) &&
           memcmp(&current, saved, field.Size) == 0;
}

}  // namespace

BOOL SavePciConfiguration(CardHandle* handle, PciConfiguration* saved) {
    return ForEach(handle, saved, SaveOrder, Read);
}

BOOL RestorePciConfiguration(CardHandle* handle, PciConfiguration* saved) {
    return ForEach(handle, saved, Identity, Verify) && ForEach(handle, saved, Resources, Write) &&
           ForEach(handle, saved, Resources, Verify) && ForEach(handle, saved, Enabling, Write) &&
           ForEach(handle, saved, Enabling, Verify);
}

}  // namespace kestvox
