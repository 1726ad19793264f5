#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include <gtest/gtest.h>

#include "platform/inspect.h"

namespace {

TEST(MessageBoxes, AreRecordedAndAnswered) {
    platform::ClearMessageBoxes();
    const auto owner = reinterpret_cast<HWND>(0x1234);
    EXPECT_EQ(MessageBoxW(nullptr, u"No key", nullptr, MB_ICONHAND | MB_SYSTEMMODAL), IDOK);
    platform::AnswerMessageBoxes(IDNO);
    EXPECT_EQ(MessageBoxW(owner, u"Really?", u"Question", MB_YESNO), IDNO);
    EXPECT_EQ(MessageBoxW(owner, u"Well", u"", MB_RETRYCANCEL), IDRETRY) << "it has no such button";
    EXPECT_EQ(MessageBoxW(owner, u"", u"", 0xF), 0);
    platform::AnswerMessageBoxes(IDOK);

    const std::vector<platform::MessageBoxRecord> boxes = platform::MessageBoxes();
    ASSERT_EQ(boxes.size(), 3u);
    EXPECT_EQ(boxes[0].Owner, nullptr);
    EXPECT_EQ(boxes[0].Text, u"No key");
    EXPECT_EQ(boxes[0].Caption, u"Error");
    EXPECT_EQ(boxes[0].Style, 0x1010u);
    EXPECT_EQ(boxes[1].Owner, owner);
    EXPECT_EQ(boxes[1].Caption, u"Question");
    platform::ClearMessageBoxes();
    EXPECT_TRUE(platform::MessageBoxes().empty());
}

TEST(MessageQueue, FiltersAndKeepsOrder) {
    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
    const DWORD self = GetCurrentThreadId();
    for (UINT number : {WM_USER + 1u, WM_USER + 2u, WM_USER + 1u, UINT{WM_QUIT}}) {
        ASSERT_TRUE(PostThreadMessageW(self, number, number, -1));
    }
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_USER + 2, WM_USER + 9, PM_NOREMOVE));
    EXPECT_TRUE(GetMessageW(&message, nullptr, WM_USER + 2, WM_USER + 9));
    EXPECT_EQ(message.message, WM_USER + 2u);
    EXPECT_EQ(message.wParam, WM_USER + 2u);
    EXPECT_EQ(message.lParam, -1);
    EXPECT_FALSE(PeekMessageW(&message, GetDesktopWindow(), 0, 0, PM_REMOVE)) << "these have no window";
    EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.message, WM_USER + 1u);
    EXPECT_FALSE(GetMessageW(&message, nullptr, WM_USER, WM_USER)) << "a quit passes every filter";
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));

    EXPECT_FALSE(PostMessageW(reinterpret_cast<HWND>(0x4242), WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
}

// A thread that gives back the first message posted to it.
struct Receiver {
    HANDLE Listening;
    MSG Received;

    static DWORD WINAPI Run(void* parameter) {
        auto* const receiver = static_cast<Receiver*>(parameter);
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        SetEvent(receiver->Listening);
        GetMessageW(&receiver->Received, nullptr, 0, 0);
        return 0;
    }
};

TEST(MessageQueue, WakesItsThreadAndEndsWithIt) {
    Receiver receiver = {CreateEventW(nullptr, TRUE, FALSE, nullptr), {}};
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0, Receiver::Run, &receiver, 0, &id);
    WaitForSingleObject(receiver.Listening, INFINITE);
    EXPECT_TRUE(PostThreadMessageW(id, WM_APP, 1, 2));
    WaitForSingleObject(thread, INFINITE);
    EXPECT_EQ(receiver.Received.message, UINT{WM_APP});
    EXPECT_EQ(receiver.Received.lParam, 2);
    EXPECT_FALSE(PostThreadMessageW(id, WM_APP, 1, 2));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_THREAD_ID});
    CloseHandle(thread);
    CloseHandle(receiver.Listening);
}

struct Called {
    HDRVR Device;
    UINT Message;
    DWORD_PTR First;
    DWORD_PTR Second;
};

void CALLBACK Remember(HDRVR device, UINT message, DWORD_PTR user, DWORD_PTR first, DWORD_PTR second) {
    *reinterpret_cast<Called*>(user) = {device, message, first, second};
}

TEST(DriverCallback, ReachesEveryKindOfClient) {
    const auto device = reinterpret_cast<HDRVR>(0x5000);
    Called called = {};
    const auto user = reinterpret_cast<DWORD_PTR>(&called);
    EXPECT_TRUE(DriverCallback(reinterpret_cast<DWORD_PTR>(&Remember), DCB_FUNCTION | DCB_NOSWITCH, device,
                               WOM_DONE, user, 11, 12));
    EXPECT_EQ(called.Device, device);
    EXPECT_EQ(called.Message, UINT{WOM_DONE});
    EXPECT_EQ(called.First, 11u);
    EXPECT_EQ(called.Second, 12u);

    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_TRUE(DriverCallback(reinterpret_cast<DWORD_PTR>(event), DCB_EVENT, device, WOM_OPEN, 0, 0, 0));
    EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_OBJECT_0});
    CloseHandle(event);

    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
    EXPECT_TRUE(DriverCallback(GetCurrentThreadId(), DCB_TASK, device, WIM_DATA, user, 13, 0));
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, UINT{WIM_DATA});
    EXPECT_EQ(message.wParam, reinterpret_cast<WPARAM>(device));
    EXPECT_EQ(message.lParam, 13);

    called = {};
    EXPECT_FALSE(
        DriverCallback(reinterpret_cast<DWORD_PTR>(&Remember), DCB_NULL, device, WOM_DONE, user, 0, 0));
    EXPECT_FALSE(DriverCallback(0, DCB_FUNCTION, device, WOM_DONE, user, 0, 0));
    EXPECT_FALSE(DriverCallback(0x4242, DCB_WINDOW, device, WOM_DONE, user, 0, 0));
    EXPECT_EQ(called.Message, 0u);
}

}  // namespace
