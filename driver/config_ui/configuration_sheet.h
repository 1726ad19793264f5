// The card's configuration user interface: one property sheet with the pages of every card, and the
// pages that concern all cards. It runs on the caller's thread and starts none of its own.
#pragma once

#include <windows.h>

namespace kestvox {

// Shows the sheet and returns when the user has closed it.
//   DRVCNF_OK       closed, by whichever button; or another sheet is open, which was brought to the front
//   DRVCNF_RESTART  closed, and the system is to be restarted
//   DRVCNF_CANCEL   there is no card, or the sheet cannot be made
// `owner` may be null. With a `configurationInfo` that is not null a second sheet is shown even while another
// one is open; what it points to is never read.
LONG ShowConfigurationSheet(HWND owner, HINSTANCE instance, const void* configurationInfo);

}  // namespace kestvox
