// How many memory blocks the process has allocated and not freed.
#pragma once

namespace platform {

int GlobalBlockCount();
int HeapBlockCount();

}  // namespace platform
