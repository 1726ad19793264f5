// The message queue of a thread. A thread has one from its first look into it until it ends.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace platform {

// What a reader wants to see: messages of one window, of none (ThreadOnly) or of all (null), with
// numbers from First to Last (both 0: any). WM_QUIT passes whatever the numbers.
struct MessageFilter {
    static inline const HWND ThreadOnly = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));

    HWND Window;
    UINT First;
    UINT Last;

    bool Passes(const MSG& message) const;
};

// Any thread may post; only the queue's own thread reads.
class MessageQueue {
public:
    void Post(HWND window, UINT message, WPARAM first, LPARAM second);

    // The oldest message that passes; false when there is none.
    bool Take(const MessageFilter& filter, bool remove, MSG* message);

    // Waits until there is one and removes it.
    MSG Wait(const MessageFilter& filter);

private:
    bool TakeLocked(const MessageFilter& filter, bool remove, MSG* message);

    std::mutex lock_;
    std::condition_variable posted_;
    std::deque<MSG> messages_;
};

// The calling thread's, made when it has none yet.
MessageQueue& CurrentMessageQueue();

// Null when there is no such thread or it has no queue.
std::shared_ptr<MessageQueue> FindMessageQueue(DWORD thread);

}  // namespace platform
