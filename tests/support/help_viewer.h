// The system's own help viewer, on Windows only.
#pragma once

namespace test_system {

// Whether calls of WinHelpW are passed on to the system from now on; each is noted either way.
void OpenHelp(bool open);

}  // namespace test_system
