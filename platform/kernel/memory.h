// Memory blocks that the process has and has not given back.
#pragma once

namespace platform {

int GlobalBlockCount();
int HeapBlockCount();

}  // namespace platform
