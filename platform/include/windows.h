// The slice of the Windows API that the driver and the tools call, with the SDK's names, values and
// layouts. Where a type must be 32 bits on Windows it is 32 bits here; pointers are the host's own.
#pragma once

#include "windef.h"
#include "winerror.h"
#include "winnt.h"
// These build on the three above.
#include "winbase.h"
#include "wingdi.h"
#include "winreg.h"
#include "winuser.h"
