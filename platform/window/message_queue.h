// The message queue of a thread. A thread has one from its first look into it until it ends.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace platform {

// Any thread may post and send; only the queue's own thread reads and waits.
//
// Messages that other threads sent are run before anything else is looked at, and only while the thread
// is in one of the calls here.
class MessageQueue : public std::enable_shared_from_this<MessageQueue> {
public:
    void Post(HWND window, UINT message, WPARAM first, LPARAM second);

    // Has the message run by the receiver's thread and waits for its answer, running what is sent to
    // this queue meanwhile. 0 when that thread ends first.
    LRESULT SendTo(MessageQueue& receiver, HWND window, UINT message, WPARAM first, LPARAM second);

    // The oldest message that was posted; false when there is none.
    bool Take(bool remove, MSG* message);

    // Waits until there is one and removes it.
    MSG Wait();

    // The window is gone, and so are its messages.
    void Forget(HWND window);

    // The thread ends: nothing sent is answered from now on.
    void Close();

private:
    struct SentMessage {
        MSG Message;
        std::shared_ptr<MessageQueue> Sender;
        LRESULT Result = 0;  // this and Done are guarded by the sender's lock
        bool Done = false;
    };

    bool Accept(std::shared_ptr<SentMessage> sent);
    void Finish(SentMessage& sent, LRESULT result);
    void RunSentLocked(std::unique_lock<std::mutex>& hold);
    bool TakeLocked(std::unique_lock<std::mutex>& hold, bool remove, MSG* message);

    std::mutex lock_;  // guards the rest
    std::condition_variable changed_;
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<SentMessage>> sent_;
    bool closed_ = false;
};

// Null when there is no such thread or it has no queue.
std::shared_ptr<MessageQueue> FindMessageQueue(DWORD thread);

}  // namespace platform
