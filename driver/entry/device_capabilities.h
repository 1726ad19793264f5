// What can be asked of the wave devices without opening one: how many there are, and what each can do. Input
// and output devices share their numbering: device = card ordinal x 2 + port.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace kestvox {

// Two devices for each enabled card.
DWORD CountDevices();

// Fill the whole structure. MMSYSERR_INVALPARAM: null; MMSYSERR_BADDEVICEID: no such card;
// MMSYSERR_NOTENABLED.
MMRESULT GetOutputCapabilities(UINT device, WAVEOUTCAPSW* capabilities);
MMRESULT GetInputCapabilities(UINT device, WAVEINCAPSW* capabilities);

}  // namespace kestvox
