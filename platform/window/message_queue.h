// The message queue of a thread. A thread has one from its first look into it until it ends.
#pragma once

#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace platform {

// What a reader wants to see: messages of one window and its children, of none (ThreadOnly) or of all
// (null), with numbers from First to Last (both 0: any). WM_QUIT passes whatever the numbers.
struct MessageFilter {
    static inline const HWND ThreadOnly = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));

    HWND Window;
    UINT First;
    UINT Last;

    bool Passes(const MSG& message) const;
};

// Any thread may post and send; only the queue's own thread reads, waits and sets timers.
//
// Messages that other threads sent are run before anything else is looked at, and only while the thread
// is in one of the calls here. After what was posted comes the end asked for with PostQuit, then a timer
// that is due. Timers run on the system's clock.
class MessageQueue : public std::enable_shared_from_this<MessageQueue> {
public:
    void Post(HWND window, UINT message, WPARAM first, LPARAM second);
    void PostQuit(int exitCode);

    // Has the message run by the receiver's thread and waits for its answer, running what is sent to
    // this queue meanwhile. 0 when that thread ends first.
    LRESULT SendTo(MessageQueue& receiver, HWND window, UINT message, WPARAM first, LPARAM second);

    // The oldest message that passes; false when there is none.
    bool Take(const MessageFilter& filter, bool remove, MSG* message);

    // Waits until there is one and removes it.
    MSG Wait(const MessageFilter& filter);

    // A timer of that window and number is set anew. The answer is its number.
    UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
    bool KillTimer(HWND window, UINT_PTR id);
    int TimerCount();

    // The window is gone, and so are its messages and timers.
    void Forget(HWND window);

    // The thread ends: nothing sent is answered from now on.
    void Close();

private:
    using Clock = std::chrono::steady_clock;

    struct SentMessage {
        MSG Message;
        std::shared_ptr<MessageQueue> Sender;
        LRESULT Result = 0;  // this and Done are guarded by the sender's lock
        bool Done = false;
    };

    struct Timer {
        HWND Window;
        UINT_PTR Id;
        Clock::duration Period;
        TIMERPROC Procedure;
        Clock::time_point Due;
    };

    void RunSentMessages();
    bool Accept(std::shared_ptr<SentMessage> sent);
    void Finish(SentMessage& sent, LRESULT result);
    void RunSentLocked(std::unique_lock<std::mutex>& hold);
    bool TakeLocked(const MessageFilter& filter, bool remove, MSG* message);
    bool TakeTimerLocked(const MessageFilter& filter, bool remove, MSG* message);
    Clock::time_point NextTimerLocked() const;

    std::mutex lock_;  // guards the rest
    std::condition_variable changed_;
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<SentMessage>> sent_;
    std::optional<int> quit_;
    std::vector<Timer> timers_;
    UINT_PTR lastTimerId_ = 0;
    bool closed_ = false;
};

// Null when there is no such thread or it has no queue.
std::shared_ptr<MessageQueue> FindMessageQueue(DWORD thread);

// Timers of all threads.
int TimerCount();

}  // namespace platform
