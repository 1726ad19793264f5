#include "platform/window/message_queue.h"

#include <algorithm>
#include <chrono>

#include "platform/window/machine_windows.h"

namespace platform {

namespace {

// Another process cannot wake a thread of this one, so a waiting thread looks this often for what other
// processes ask of its windows.
constexpr std::chrono::milliseconds MachinePollInterval{5};

}  // namespace

void MessageQueue::Post(HWND window, UINT message, WPARAM first, LPARAM second) {
    const std::lock_guard hold(lock_);
    posted_.push_back({window, message, first, second, 0, {}});
    changed_.notify_all();
}

LRESULT MessageQueue::SendTo(MessageQueue& receiver, HWND window, UINT message, WPARAM first, LPARAM second) {
    const auto sent = std::make_shared<SentMessage>();
    sent->Message = {window, message, first, second, 0, {}};
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

bool MessageQueue::TakeLocked(std::unique_lock<std::mutex>& hold, bool remove, MSG* message) {
    while (!sent_.empty()) {
        RunSentLocked(hold);
    }
    if (posted_.empty()) {
        return false;
    }
    *message = posted_.front();
    if (remove) {
        posted_.pop_front();
    }
    return true;
}

bool MessageQueue::Take(bool remove, MSG* message) {
    RunMachineRequests();
    std::unique_lock hold(lock_);
    return TakeLocked(hold, remove, message);
}

MSG MessageQueue::Wait() {
    MSG message;
    const bool polls = RunMachineRequests();
    std::unique_lock hold(lock_);
    while (!TakeLocked(hold, true, &message)) {
        if (!polls) {
            changed_.wait(hold);
            continue;
        }
        changed_.wait_for(hold, MachinePollInterval);
        hold.unlock();
        RunMachineRequests();
        hold.lock();
    }
    return message;
}

void MessageQueue::Forget(HWND window) {
    const std::lock_guard hold(lock_);
    std::erase_if(posted_, [window](const MSG& message) { return message.hwnd == window; });
}

void MessageQueue::Close() {
    std::deque<std::shared_ptr<SentMessage>> unanswered;
    {
        const std::lock_guard hold(lock_);
        closed_ = true;
        unanswered.swap(sent_);
    }
    for (const std::shared_ptr<SentMessage>& sent : unanswered) {
        sent->Sender->Finish(*sent, 0);
    }
}

}  // namespace platform
