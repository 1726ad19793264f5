#include "platform/window/message_queue.h"

#include <algorithm>

#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// Another process cannot wake a thread of this one, so a waiting thread looks this often for what other
// processes ask of its windows.
constexpr std::chrono::milliseconds MachinePollInterval{5};

constexpr UINT LongestPeriod = 0x7FFFFFFF;

DWORD MillisecondsNow() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

MSG MessageNow(HWND window, UINT message, WPARAM first, LPARAM second) {
    MSG made = {window, message, first, second, MillisecondsNow(), {}};
    GetCursorPos(&made.pt);
    return made;
}

}  // namespace

bool MessageFilter::Passes(const MSG& message) const {
    if (Window == ThreadOnly ? message.hwnd != nullptr
                             : Window && message.hwnd != Window && !IsChild(Window, message.hwnd)) {
        return false;
    }
    const bool any = First == 0 && Last == 0;
    return any || message.message == WM_QUIT || (message.message >= First && message.message <= Last);
}

void MessageQueue::Post(HWND window, UINT message, WPARAM first, LPARAM second) {
    const std::lock_guard hold(lock_);
    posted_.push_back(MessageNow(window, message, first, second));
    changed_.notify_all();
}

void MessageQueue::PostQuit(int exitCode) {
    const std::lock_guard hold(lock_);
    quit_ = exitCode;
    changed_.notify_all();
}

LRESULT MessageQueue::SendTo(MessageQueue& receiver, HWND window, UINT message, WPARAM first, LPARAM second) {
    const auto sent = std::make_shared<SentMessage>();
    sent->Message = MessageNow(window, message, first, second);
    sent->Sender = shared_from_this();
    if (!receiver.Accept(sent)) {
        return 0;
    }
    std::unique_lock hold(lock_);
    while (!sent->Done) {
        if (sent_.empty()) {
            changed_.wait(hold);
        } else {
            RunSentLocked(hold);
        }
    }
    return sent->Result;
}

bool MessageQueue::Accept(std::shared_ptr<SentMessage> sent) {
    const std::lock_guard hold(lock_);
    if (closed_) {
        return false;
    }
    sent_.push_back(std::move(sent));
    changed_.notify_all();
    return true;
}

void MessageQueue::Finish(SentMessage& sent, LRESULT result) {
    const std::lock_guard hold(lock_);
    sent.Result = result;
    sent.Done = true;
    changed_.notify_all();
}

// Runs the oldest one, without the lock.
void MessageQueue::RunSentLocked(std::unique_lock<std::mutex>& hold) {
    const std::shared_ptr<SentMessage> sent = sent_.front();
    sent_.pop_front();
    hold.unlock();
    const MSG& message = sent->Message;
    const LRESULT result = SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
    sent->Sender->Finish(*sent, result);
    hold.lock();
}

void MessageQueue::RunSentMessages() {
    std::unique_lock hold(lock_);
    while (!sent_.empty()) {
        RunSentLocked(hold);
    }
}

bool MessageQueue::TakeTimerLocked(const MessageFilter& filter, bool remove, MSG* message) {
    const Clock::time_point now = Clock::now();
    for (Timer& timer : timers_) {
        MSG due = {timer.Window, WM_TIMER, timer.Id, reinterpret_cast<LPARAM>(timer.Procedure), 0, {}};
        if (timer.Due > now || !filter.Passes(due)) {
            continue;
        }
        if (remove) {
            timer.Due = now + timer.Period;
        }
        *message = MessageNow(due.hwnd, due.message, due.wParam, due.lParam);
        return true;
    }
    return false;
}

MessageQueue::Clock::time_point MessageQueue::NextTimerLocked() const {
    Clock::time_point next = Clock::time_point::max();
    for (const Timer& timer : timers_) {
        next = std::min(next, timer.Due);
    }
    return next;
}

bool MessageQueue::TakeLocked(const MessageFilter& filter, bool remove, MSG* message) {
    const auto found = std::find_if(posted_.begin(), posted_.end(),
                                    [&filter](const MSG& candidate) { return filter.Passes(candidate); });
    if (found != posted_.end()) {
        *message = *found;
        if (remove) {
            posted_.erase(found);
        }
        return true;
    }
    if (quit_) {
        *message = MessageNow(nullptr, WM_QUIT, static_cast<WPARAM>(*quit_), 0);
        if (remove) {
            quit_.reset();
        }
        return true;
    }
    return TakeTimerLocked(filter, remove, message);
}

bool MessageQueue::Take(const MessageFilter& filter, bool remove, MSG* message) {
    RunMachineRequests();
    RunSentMessages();
    const std::lock_guard hold(lock_);
    return TakeLocked(filter, remove, message);
}

MSG MessageQueue::Wait(const MessageFilter& filter) {
    MSG message;
    const bool polls = RunMachineRequests();
    std::unique_lock hold(lock_);
    for (;;) {
        while (!sent_.empty()) {
            RunSentLocked(hold);
        }
        if (TakeLocked(filter, true, &message)) {
            return message;
        }
        Clock::time_point until = NextTimerLocked();
        if (polls) {
            until = std::min(until, Clock::now() + MachinePollInterval);
        }
        if (until == Clock::time_point::max()) {
            changed_.wait(hold);
        } else {
            changed_.wait_until(hold, until);
        }
        if (polls) {
            hold.unlock();
            RunMachineRequests();
            hold.lock();
        }
    }
}

UINT_PTR MessageQueue::SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    const std::chrono::milliseconds period(std::clamp<UINT>(milliseconds, USER_TIMER_MINIMUM, LongestPeriod));
    const std::lock_guard hold(lock_);
    const auto found = std::find_if(timers_.begin(), timers_.end(), [window, id](const Timer& timer) {
        return timer.Window == window && timer.Id == id;
    });
    if (found != timers_.end()) {
        *found = {window, id, period, procedure, Clock::now() + period};
        return id;
    }
    if (!window) {
        id = ++lastTimerId_;
    }
    timers_.push_back({window, id, period, procedure, Clock::now() + period});
    return id;
}

bool MessageQueue::KillTimer(HWND window, UINT_PTR id) {
    const std::lock_guard hold(lock_);
    return std::erase_if(timers_, [window, id](const Timer& timer) {
               return timer.Window == window && timer.Id == id;
           }) != 0;
}

int MessageQueue::TimerCount() {
    const std::lock_guard hold(lock_);
    return static_cast<int>(timers_.size());
}

void MessageQueue::Forget(HWND window) {
    const std::lock_guard hold(lock_);
    std::erase_if(posted_, [window](const MSG& message) { return message.hwnd == window; });
    std::erase_if(timers_, [window](const Timer& timer) { return timer.Window == window; });
}

void MessageQueue::Close() {
    std::deque<std::shared_ptr<SentMessage>> unanswered;
    {
        const std::lock_guard hold(lock_);
        closed_ = true;
        timers_.clear();
        unanswered.swap(sent_);
    }
    for (const std::shared_ptr<SentMessage>& sent : unanswered) {
        sent->Sender->Finish(*sent, 0);
    }
}

}  // namespace platform
