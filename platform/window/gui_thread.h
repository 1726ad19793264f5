// What a thread has once it deals with messages: its queue, its focus and its view of mouse and keyboard.
#pragma once

#include <windows.h>

#include <array>
#include <memory>

#include "platform/window/message_queue.h"

namespace platform {

// Touched by its own thread only, but for the queue.
struct GuiThread {
    GuiThread();
    ~GuiThread();  // destroys the thread's windows
    GuiThread(const GuiThread&) = delete;
    GuiThread& operator=(const GuiThread&) = delete;

    const DWORD Id;
    const std::shared_ptr<MessageQueue> Queue;

    HWND Focus = nullptr;
    HWND Capture = nullptr;
    HCURSOR Cursor = nullptr;
    std::array<BYTE, 256> Keys{};  // by virtual key: 0x80 while down
};

// The calling thread's, made at the first call.
GuiThread& CurrentGuiThread();

}  // namespace platform
