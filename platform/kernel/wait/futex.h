// Blocking a thread on a word of this process's memory, as the host's kernel offers it.
#pragma once

#include <atomic>

#include "platform/kernel/wait/deadline.h"

namespace platform {

// Blocks while the word has this value. False at the deadline; true may also come without a change.
bool BlockWhileEqual(const std::atomic<int>* word, int value, Deadline deadline);

// Wakes one or all of the threads that block on the word. Only its address is used: the word may be gone.
void WakeOne(const std::atomic<int>* word);
void WakeAll(const std::atomic<int>* word);

}  // namespace platform
