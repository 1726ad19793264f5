#include "platform/window/gui_thread.h"

#include <map>
#include <mutex>

#include "platform/window/window_object.h"

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

}  // namespace

GuiThread::GuiThread() : Id(GetCurrentThreadId()), Queue(std::make_shared<MessageQueue>()) {
    const std::lock_guard hold(AllQueues().Lock);
    AllQueues().ByThread[Id] = Queue;
}

GuiThread::~GuiThread() {
    DestroyWindowsOfThread(Id);
    {
        const std::lock_guard hold(AllQueues().Lock);
        AllQueues().ByThread.erase(Id);
    }
    Queue->Close();
}

GuiThread& CurrentGuiThread() {
    thread_local GuiThread thread;
    return thread;
}

std::shared_ptr<MessageQueue> FindMessageQueue(DWORD thread) {
    Queues& queues = AllQueues();
    const std::lock_guard hold(queues.Lock);
    const auto found = queues.ByThread.find(thread);
    return found == queues.ByThread.end() ? nullptr : found->second;
}

}  // namespace platform
