#include "platform/window/message_queue.h"

#include <algorithm>
#include <chrono>
#include <map>

namespace platform {

namespace {

struct Queues {
    std::mutex Lock;  // guards ByThread
    std::map<DWORD, std::shared_ptr<MessageQueue>> ByThread;
};

// Never destroyed: threads may still end while the program does.
Queues& AllQueues() {
    static auto* const queues = new Queues;
    return *queues;
}

// Keeps a thread's queue findable until the thread ends.
class ThreadQueue {
public:
    ThreadQueue() : thread_(GetCurrentThreadId()), queue_(std::make_shared<MessageQueue>()) {
        const std::lock_guard hold(AllQueues().Lock);
        AllQueues().ByThread[thread_] = queue_;
    }
    ~ThreadQueue() {
        const std::lock_guard hold(AllQueues().Lock);
        AllQueues().ByThread.erase(thread_);
    }
    MessageQueue& Get() { return *queue_; }

private:
    const DWORD thread_;
    const std::shared_ptr<MessageQueue> queue_;
};

DWORD MillisecondsNow() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

}  // namespace

bool MessageFilter::Passes(const MSG& message) const {
    const HWND wanted = Window == ThreadOnly ? nullptr : Window;
    if (Window && message.hwnd != wanted) {
        return false;
    }
    const bool any = First == 0 && Last == 0;
    return any || message.message == WM_QUIT || (message.message >= First && message.message <= Last);
}

void MessageQueue::Post(HWND window, UINT message, WPARAM first, LPARAM second) {
    const std::lock_guard hold(lock_);
    messages_.push_back({window, message, first, second, MillisecondsNow(), {}});
    posted_.notify_all();
}

bool MessageQueue::TakeLocked(const MessageFilter& filter, bool remove, MSG* message) {
    const auto found = std::find_if(messages_.begin(), messages_.end(),
                                    [&filter](const MSG& candidate) { return filter.Passes(candidate); });
    if (found == messages_.end()) {
        return false;
    }
    *message = *found;
    if (remove) {
        messages_.erase(found);
    }
    return true;
}

bool MessageQueue::Take(const MessageFilter& filter, bool remove, MSG* message) {
    const std::lock_guard hold(lock_);
    return TakeLocked(filter, remove, message);
}

MSG MessageQueue::Wait(const MessageFilter& filter) {
    std::unique_lock hold(lock_);
    MSG message;
    while (!TakeLocked(filter, true, &message)) {
        posted_.wait(hold);
    }
    return message;
}

MessageQueue& CurrentMessageQueue() {
    thread_local ThreadQueue queue;
    return queue.Get();
}

std::shared_ptr<MessageQueue> FindMessageQueue(DWORD thread) {
    Queues& queues = AllQueues();
    const std::lock_guard hold(queues.Lock);
    const auto found = queues.ByThread.find(thread);
    return found == queues.ByThread.end() ? nullptr : found->second;
}

}  // namespace platform

using namespace platform;

BOOL WINAPI PostThreadMessageW(DWORD thread, UINT message, WPARAM first, LPARAM second) {
    const std::shared_ptr<MessageQueue> queue = FindMessageQueue(thread);
    if (!queue) {
        SetLastError(ERROR_INVALID_THREAD_ID);
        return FALSE;
    }
    queue->Post(nullptr, message, first, second);
    return TRUE;
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT options) {
    const bool remove = (options & PM_REMOVE) != 0;
    return CurrentMessageQueue().Take({window, first, last}, remove, message) ? TRUE : FALSE;
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    *message = CurrentMessageQueue().Wait({window, first, last});
    return message->message != WM_QUIT ? TRUE : FALSE;
}
