#include <windows.h>

#include <gtest/gtest.h>

#include "tests/platform/window_recorder.h"

namespace {

using namespace window_test;

constexpr UINT Question = WM_APP + 1;
constexpr UINT QuestionBack = WM_APP + 2;

// A thread that sends Question to a window and keeps the answer.
struct Asker {
    HWND Window;
    LRESULT Answer = -1;
    HANDLE Thread;

    explicit Asker(HWND window) : Window(window), Thread(CreateThread(nullptr, 0, Ask, this, 0, nullptr)) {}
    ~Asker() { CloseHandle(Thread); }
    Asker(const Asker&) = delete;
    Asker& operator=(const Asker&) = delete;

    static DWORD WINAPI Ask(void* asker) {
        auto& self = *static_cast<Asker*>(asker);
        const HWND own =
            CreateWindowExW(0, u"#32770", u"Own", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        self.Answer = SendMessageW(self.Window, Question, 0, reinterpret_cast<LPARAM>(own));
        PostMessageW(self.Window, QuestionBack, 0, 0);
        return 0;
    }
};

TEST(Messages, SentFromAnotherThreadRunHereAndMayAskBack) {
    Recorder recorder;
    const DWORD thread = GetCurrentThreadId();
    DWORD ranOn = 0;
    int depth = 0;
    recorder.Handlers[Question] = [&](HWND, WPARAM, LPARAM sender) -> LRESULT {
        ranOn = GetCurrentThreadId();
        ++depth;
        return 40 + SendMessageW(reinterpret_cast<HWND>(sender), WM_GETTEXTLENGTH, 0, 0);
    };
    const HWND window = recorder.Make(WS_POPUP, nullptr, 1);
    const Asker asker(window);
    MSG message;
    ASSERT_TRUE(GetMessageW(&message, window, 0, 0));
    EXPECT_EQ(message.message, QuestionBack) << "what is sent is run, not taken";
    WaitForSingleObject(asker.Thread, INFINITE);
    EXPECT_EQ(asker.Answer, 43);
    EXPECT_EQ(ranOn, thread);
    EXPECT_EQ(depth, 1);
    DestroyWindow(window);
}

TEST(Messages, SentToAThreadThatEndsAreAnsweredWithNothing) {
    struct Idle {
        HWND Window = nullptr;
        HANDLE Made = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        HANDLE End = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    } idle;
    const auto wait = [](void* parameter) -> DWORD {
        auto& self = *static_cast<Idle*>(parameter);
        self.Window =
            CreateWindowExW(0, u"#32770", u"Own", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        SetEvent(self.Made);
        return WaitForSingleObject(self.End, INFINITE);  // and looks at no message
    };
    const HANDLE thread = CreateThread(nullptr, 0, wait, &idle, 0, nullptr);
    WaitForSingleObject(idle.Made, INFINITE);
    const Asker asker(idle.Window);
    SetEvent(idle.End);
    WaitForSingleObject(asker.Thread, INFINITE);
    EXPECT_EQ(asker.Answer, 0);
    WaitForSingleObject(thread, INFINITE);
    for (const HANDLE handle : {thread, idle.Made, idle.End}) {
        CloseHandle(handle);
    }
}

TEST(Messages, ComeInOrderAndTheEndComesLast) {
    Recorder recorder;
    const HWND parent = recorder.Make(WS_POPUP, nullptr, 1);
    const HWND child = recorder.Make(WS_CHILD, parent, 2);
    PostQuitMessage(7);
    PostMessageW(nullptr, WM_APP, 0, 0);
    PostMessageW(child, WM_APP + 1, 0, 0);
    PostMessageW(parent, WM_APP + 2, 0, 0);

    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, parent, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(message.message, WM_APP + 1u) << "a parent's filter lets its children's messages pass";
    EXPECT_TRUE(PeekMessageW(&message, parent, WM_APP + 2, WM_APP + 2, PM_REMOVE));
    EXPECT_EQ(message.message, WM_APP + 2u);
    EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.message, UINT{WM_APP});
    EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.hwnd, child);
    EXPECT_FALSE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    DestroyWindow(parent);
    EXPECT_EQ(GetMessageW(&message, parent, 0, 0), -1);
}

TEST(Messages, OfTimersComeWhenNothingElseDoes) {
    Recorder recorder;
    const HWND window = recorder.Make(WS_POPUP, nullptr, 1);
    static UINT_PTR called;
    called = 0;
    const UINT_PTR free =
        SetTimer(nullptr, 99, USER_TIMER_MINIMUM, [](HWND, UINT, UINT_PTR id, DWORD) { called = id; });
    EXPECT_EQ(SetTimer(window, 5, USER_TIMER_MINIMUM, nullptr), 5u);
    MSG message;
    bool told = false;
    while (!told || called == 0) {
        GetMessageW(&message, nullptr, 0, 0);
        EXPECT_EQ(message.message, UINT{WM_TIMER});
        DispatchMessageW(&message);
        told = told || !recorder.Take({WM_TIMER}).empty();
    }
    EXPECT_EQ(called, free);
    EXPECT_TRUE(KillTimer(window, 5));
    EXPECT_FALSE(KillTimer(window, 5));
    EXPECT_TRUE(KillTimer(nullptr, free));
    DestroyWindow(window);
}

}  // namespace
