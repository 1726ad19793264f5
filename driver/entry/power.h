// What the library does when the system suspends and resumes.
#pragma once

namespace kestvox {

// Stops every stream of this process and releases its channel.
void SuspendDriver();

enum class Wake {
    Normal,
    Critical,  // without a suspend, as a rule
};

// Initialises every enabled card anew, then brings every stream of this process back; those that ran go
// on. Left alone is a card that does not need it: one that another process has brought back since this one's
// suspend, and, at a critical resume without a suspend, one whose registers say that it has not slept. A card
// that cannot be opened is skipped.
void ResumeDriver(Wake wake);

}  // namespace kestvox
