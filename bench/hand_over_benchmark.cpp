// The least that a buffer can cost: a thread makes the five requests of a buffer, and its completion calls a
// second thread, which counts it. TurnAround is held against this.
#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <vector>

#include "bench/answering_device.h"
#include "card/protocol.h"
#include "platform/machine.h"

namespace {

using namespace kestvox;

constexpr unsigned BuffersEach = 8;

// A channel and the thread that its completions call.
class BareStream {
public:
    explicit BareStream(std::atomic<unsigned>& back) : back_(back) {
        file_ = CreateFileW(TEXT("\\\\.\\Kestrelvox0"), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                            OPEN_EXISTING, 0, nullptr);
        stop_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        ready_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        DWORD id = 0;
        thread_ = CreateThread(nullptr, 0, &Serve, this, 0, &id);
        WaitForSingleObject(ready_, INFINITE);
    }
    ~BareStream() {
        SetEvent(stop_);
        WaitForSingleObject(thread_, INFINITE);
        for (const HANDLE handle : {thread_, ready_, stop_, file_}) {
            CloseHandle(handle);
        }
    }
    BareStream(const BareStream&) = delete;
    BareStream& operator=(const BareStream&) = delete;

    void HandIn() {
        Request(IOCTL_BEGIN_BUFFER);
        Request(IOCTL_MAP_BUFFER);
        Request(IOCTL_SET_BUFFER_COOKIE, reinterpret_cast<ULONG_PTR>(this));
        Request(IOCTL_QUEUE_BUFFER);
        Request(IOCTL_START_TRANSFER);
    }

private:
    void Request(DWORD code, ULONG_PTR word = 0) {
        DWORD returned = 0;
        DeviceIoControl(file_, code, &word, sizeof word, nullptr, 0, &returned, nullptr);
    }

    static DWORD WINAPI Serve(LPVOID stream) {
        auto& self = *static_cast<BareStream*>(stream);
        self.Request(IOCTL_SET_COMPLETION_ROUTINE, reinterpret_cast<ULONG_PTR>(&OnDone));
        SetEvent(self.ready_);
        while (WaitForSingleObjectEx(self.stop_, INFINITE, TRUE) == WAIT_IO_COMPLETION) {
        }
        return 0;
    }

    static void CALLBACK OnDone(ULONG_PTR cookie, ULONG_PTR, ULONG_PTR) {
        auto& back = reinterpret_cast<BareStream*>(cookie)->back_;
        ++back;
        back.notify_one();
    }

    std::atomic<unsigned>& back_;
    HANDLE file_;
    HANDLE stop_;
    HANDLE ready_;
    HANDLE thread_;
};

void BareHandOver(benchmark::State& state) {
    platform::UseMachine("");
    AnsweringDevice device(1);
    std::atomic<unsigned> back = 0;
    std::vector<std::unique_ptr<BareStream>> streams;
    for (int64_t i = 0; i < state.range(0); ++i) {
        streams.push_back(std::make_unique<BareStream>(back));
    }
    const auto all = static_cast<unsigned>(streams.size()) * BuffersEach;
    for (auto _ : state) {
        back = 0;
        for (unsigned i = 0; i < BuffersEach; ++i) {
            for (const auto& stream : streams) {
                stream->HandIn();
            }
        }
        for (unsigned now = back; now != all; now = back) {
            back.wait(now);
        }
    }
    state.SetItemsProcessed(state.iterations() * all);
}
BENCHMARK(BareHandOver)->ArgName("streams")->Arg(1)->Arg(8)->Arg(64)->UseRealTime()->MeasureProcessCPUTime();

}  // namespace
