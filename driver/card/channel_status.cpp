#include "card/channel_status.h"

#include "card/registers.h"

namespace kestvox {

namespace {

// Indirect registers 0 to 4 are channel-status bytes 0 to 4.
struct StatusByte {
    DWORD Index;
    DWORD Value;
    DWORD Mask;
};

template <unsigned Count>
BOOL WriteStatus(CardHandle* handle, bool professional, const StatusByte (&bytes)[Count]) {
    if (!WriteCard(handle, card_register::DigitalTransmitter, professional ? ProfessionalFormat : 0,
                   ProfessionalFormat)) {
        return FALSE;
    }
    for (const StatusByte& byte : bytes) {
        if (!WriteIndirectRegister(handle, byte.Index, byte.Value, byte.Mask)) {
            return FALSE;
        }
    }
    return TRUE;
}

// Byte 0, professional: bit 0 professional, bit 1 non-audio, bits 2-4 emphasis, bits 6-7 rate.
DWORD ProfessionalByte0(bool nonAudio, bool preemphasis) {
    return 0x01u | (nonAudio ? 0x02u : 0u) | (preemphasis ? 0x0Cu : 0u);
}

// Byte 0, consumer: bit 1 non-audio, bit 2 copying permitted, bit 3 pre-emphasis.
DWORD ConsumerByte0(bool nonAudio, bool copyProtect, bool preemphasis) {
    return (nonAudio ? 0x02u : 0u) | (copyProtect ? 0u : 0x04u) | (preemphasis && !nonAudio ? 0x08u : 0u);
}

constexpr DWORD Word24Bit = 0x2C;  // professional byte 2: 24-bit audio words

}  // namespace

BOOL SetDigitalOutputStatus(CardHandle* handle, const CardRecord& card, BOOL forceNonAudio) {
    const CardSettings& settings = card.Settings;
    const bool nonAudio = settings.NonAudio != 0 || forceNonAudio;
    const bool copyProtect = settings.CopyProtect != 0;
    const bool preemphasis = settings.Preemphasis != 0;
    if (settings.Professional != 0) {
        return WriteStatus(handle, true,
                           {{0, ProfessionalByte0(nonAudio, preemphasis), 0x3F}, {1, 0x00, 0xFF}});
    }
    // Byte 1: category code, bit 7 the generation status.
    return WriteStatus(handle, false,
                       {{0, ConsumerByte0(nonAudio, copyProtect, preemphasis), 0xFF},
                        {1, copyProtect ? 0x01u : 0x81u, 0xFF}});
}

BOOL SetChannelStatusRate(CardHandle* handle, const CardRecord& card, const CardRate& rate) {
    if (card.Settings.Professional != 0) {
        return WriteStatus(handle, true,
                           {{0, rate.ProfessionalByte0, 0xC1},
                            {2, Word24Bit, 0xFF},
                            {3, 0x00, 0xFF},
                            {4, rate.ProfessionalByte4, 0xFF}});
    }
    return WriteStatus(handle, false,
                       {{0, 0x00, 0x01}, {2, 0x00, 0xFF}, {3, rate.ConsumerByte3, 0xFF}, {4, 0x00, 0xFF}});
}

}  // namespace kestvox
