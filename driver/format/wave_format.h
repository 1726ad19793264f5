// Which wave formats a port takes, and how the card plays each.
#pragma once

#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include "card/card_record.h"
#include "format/sample_format.h"

namespace kestvox {

// IEC 61937 data in PCM frames; digital output only.
inline constexpr WORD FormatTagNonAudio = 0x0092;

// Fills `*accepted` and answers TRUE when the card's output port takes the format: 1 or 2 channels, one
// of eight rates, and a combination of tag, width and block alignment of the format table.
BOOL AcceptOutputFormat(const CardRecord& card, DWORD port, const WAVEFORMATEX& format,
                        StreamFormat* accepted);

// The same for an input port; the analog one dithers narrow formats when the card's setting asks for it.
BOOL AcceptInputFormat(const CardRecord& card, DWORD port, const WAVEFORMATEX& format,
                       StreamFormat* accepted);

}  // namespace kestvox
