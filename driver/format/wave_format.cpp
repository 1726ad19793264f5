#include "format/wave_format.h"

#include <cstring>

#include "card/rates.h"

namespace kestvox {

namespace {

constexpr DWORD AnalogPort = 0;
constexpr WORD ExtensibleExtraSize = 22;

// KSDATAFORMAT_SUBTYPE_PCM: 00000001-0000-0010-8000-00AA00389B71
constexpr BYTE PcmSubFormat[16] = {0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                   0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

constexpr WORD AnyValidBits = 0;
constexpr WORD SlotByLeft24 = 0xFFFF;  // SlotLeft or SlotRight, as the card's setting says

struct FormatRow {
    WORD Tag;
    WORD Bits;
    WORD ValidBits;   // extensible only
    WORD SampleSize;  // bytes of block alignment for each channel
    WORD SampleFormat;
    WORD Conversion;
};

constexpr FormatRow FormatTable[] = {
    {WAVE_FORMAT_PCM, 8, AnyValidBits, 1, Sample8, NoConversion},
    {WAVE_FORMAT_PCM, 16, AnyValidBits, 2, Sample16, NoConversion},
    {WAVE_FORMAT_PCM, 20, AnyValidBits, 3, SlotLeft, Packed24},
    {WAVE_FORMAT_PCM, 24, AnyValidBits, 3, SlotLeft, Packed24},
    {WAVE_FORMAT_PCM, 20, AnyValidBits, 4, SlotByLeft24, NoConversion},
    {WAVE_FORMAT_PCM, 24, AnyValidBits, 4, SlotByLeft24, NoConversion},
    {WAVE_FORMAT_PCM, 32, AnyValidBits, 4, SlotByLeft24, NoConversion},
    {WAVE_FORMAT_ALAW, 8, AnyValidBits, 1, Sample16, FromALaw},
    {WAVE_FORMAT_MULAW, 8, AnyValidBits, 1, Sample16, FromMuLaw},
    {WAVE_FORMAT_EXTENSIBLE, 8, AnyValidBits, 1, Sample8, NoConversion},
    {WAVE_FORMAT_EXTENSIBLE, 16, AnyValidBits, 2, Sample16, NoConversion},
    {WAVE_FORMAT_EXTENSIBLE, 24, AnyValidBits, 3, SlotLeft, Packed24},
    {WAVE_FORMAT_EXTENSIBLE, 32, 20, 4, SlotLeft, NoConversion},
    {WAVE_FORMAT_EXTENSIBLE, 32, 24, 4, SlotLeft, NoConversion},
};

// False for an extensible format that is not plain PCM. `*validBits` is AnyValidBits for other tags.
bool ReadValidBits(const WAVEFORMATEX& format, WORD* validBits) {
    *validBits = AnyValidBits;
    if (format.wFormatTag != WAVE_FORMAT_EXTENSIBLE) {
        return true;
    }
    if (format.cbSize != ExtensibleExtraSize) {
        return false;
    }
    const auto& extensible = reinterpret_cast<const WAVEFORMATEXTENSIBLE&>(format);
    *validBits = extensible.Samples.wValidBitsPerSample;
    return memcmp(&extensible.SubFormat, PcmSubFormat, sizeof PcmSubFormat) == 0 &&
           *validBits <= format.wBitsPerSample;
}

const FormatRow* FindRow(const WAVEFORMATEX& format, WORD tag, WORD validBits) {
    for (const FormatRow& row : FormatTable) {
        if (row.Tag == tag && row.Bits == format.wBitsPerSample &&
            (row.ValidBits == AnyValidBits || row.ValidBits == validBits) &&
            row.SampleSize * format.nChannels == format.nBlockAlign) {
            return &row;
        }
    }
    return nullptr;
}

// `tag` is the table's tag for the format.
BOOL AcceptFormat(const CardRecord& card, const WAVEFORMATEX& format, WORD tag, StreamFormat* accepted) {
    WORD validBits = 0;
    if (format.nChannels < 1 || format.nChannels > 2 || !ReadValidBits(format, &validBits)) {
        return FALSE;
    }
    const FormatRow* row = FindRow(format, tag, validBits);
    const CardRate* rate = FindCardRate(format.nSamplesPerSec);
    if (row == nullptr || rate == nullptr) {
        return FALSE;
    }
    const WORD slot = card.Settings.Left24 != 0 ? SlotLeft : SlotRight;
    accepted->FormatTag = format.wFormatTag;
    accepted->Channels = format.nChannels;
    accepted->RateCode = rate->Code;
    accepted->SampleFormat = row->SampleFormat == SlotByLeft24 ? slot : row->SampleFormat;
    accepted->Conversion = row->Conversion;
    accepted->SampleRate = rate->Hz;
    accepted->AvgBytesPerSec = format.nAvgBytesPerSec;
    return TRUE;
}

}  // namespace

BOOL AcceptOutputFormat(const CardRecord& card, DWORD port, const WAVEFORMATEX& format,
                        StreamFormat* accepted) {
    if (format.wFormatTag == FormatTagNonAudio) {
        // Only an S/PDIF output can mark it as what it is; its layout is that of PCM.
        return port != AnalogPort && AcceptFormat(card, format, WAVE_FORMAT_PCM, accepted);
    }
    return AcceptFormat(card, format, format.wFormatTag, accepted);
}

BOOL AcceptInputFormat(const CardRecord& card, DWORD port, const WAVEFORMATEX& format,
                       StreamFormat* accepted) {
    const bool recordable =
        format.wFormatTag == WAVE_FORMAT_PCM || format.wFormatTag == WAVE_FORMAT_EXTENSIBLE;
    if (!recordable || !AcceptFormat(card, format, format.wFormatTag, accepted)) {
        return FALSE;
    }
    const bool narrow = accepted->SampleFormat == Sample8 || accepted->SampleFormat == Sample16;
    if (narrow && port == AnalogPort && card.Settings.DitherADC != 0) {
        accepted->Conversion = Dithered;
    }
    return TRUE;
}

}  // namespace kestvox
