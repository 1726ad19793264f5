// What the library does when the system suspends and resumes.
#pragma once

namespace kestvox {

// Stops every stream of this process and releases its channel.
void SuspendDriver();

// Initialises every enabled card anew, then brings every stream of this process back; those that ran go
// on. A card that cannot be opened is skipped.
void ResumeDriver();

}  // namespace kestvox
