// Handles, threads, thread-local storage and memory: what any Win32 program may rely on.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>

namespace {

TEST(Handle, GoesBadWhenClosedAndIsNoNewerOne) {
    const HANDLE old = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ASSERT_TRUE(CloseHandle(old));
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    EXPECT_FALSE(CloseHandle(old));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(SetEvent(old));
    EXPECT_EQ(WaitForSingleObject(old, 0), WAIT_FAILED);
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT))
        << "set through the old handle";

    SetLastError(0);
    EXPECT_FALSE(SetEvent(mutex)) << "a handle of another kind";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_FALSE(CloseHandle(nullptr));
    EXPECT_FALSE(SetEvent(INVALID_HANDLE_VALUE));
    CloseHandle(mutex);
    CloseHandle(event);
}

TEST(Handle, ManyAreToldApart) {
    std::set<HANDLE> handles;
    for (int i = 0; i < 1000; ++i) {
        handles.insert(CreateEventW(nullptr, TRUE, i % 2 == 0, nullptr));
    }
    EXPECT_EQ(handles.size(), 1000u);
    int signalled = 0;
    for (const HANDLE handle : handles) {
        signalled += WaitForSingleObject(handle, 0) == WAIT_OBJECT_0 ? 1 : 0;
        EXPECT_TRUE(CloseHandle(handle));
    }
    EXPECT_EQ(signalled, 500);
}

TEST(Thread, HasIdPriorityExitCodeAndLastErrorOfItsOwn) {
    DWORD id = 0;
    DWORD ownId = GetCurrentThreadId();
    SetLastError(1234);
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID creatorsId) -> DWORD {
            SetLastError(5);
            if (GetCurrentThreadId() == *static_cast<DWORD*>(creatorsId)) {
                return 1;
            }
            if (!SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL)) {
                return 2;
            }
            ExitThread(GetCurrentThreadId() + 0x1000);
        },
        &ownId, 0, &id);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0) << "stays signalled";
    EXPECT_EQ(GetLastError(), 1234u);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, id + 0x1000);
    CloseHandle(thread);

    EXPECT_TRUE(GetExitCodeThread(GetCurrentThread(), &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(GetThreadPriority(GetCurrentThread()), THREAD_PRIORITY_NORMAL);
    EXPECT_FALSE(SetThreadPriority(GetCurrentThread(), 7));
}

TEST(ThreadLocalStorage, IsPerThreadAndEmptyAgainAfterItsSlotIsReused) {
    const DWORD slot = TlsAlloc();
    ASSERT_NE(slot, TLS_OUT_OF_INDEXES);
    int mine = 0;
    EXPECT_EQ(TlsGetValue(slot), nullptr);
    EXPECT_TRUE(TlsSetValue(slot, &mine));
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID argument) -> DWORD { return TlsGetValue(*static_cast<const DWORD*>(argument)) == nullptr; },
        const_cast<DWORD*>(&slot), 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD empty = 0;
    GetExitCodeThread(thread, &empty);
    EXPECT_EQ(empty, 1u);
    CloseHandle(thread);
    EXPECT_EQ(TlsGetValue(slot), &mine);

    EXPECT_TRUE(TlsFree(slot));
    const DWORD again = TlsAlloc();
    EXPECT_EQ(TlsGetValue(again), nullptr);
    EXPECT_TRUE(TlsFree(again));
    EXPECT_FALSE(TlsFree(0xFFFF));
}

TEST(CriticalSection, IsRecursiveAndExcludesOtherThreads) {
    struct Shared {
        CRITICAL_SECTION Section;
        int Counter;
    } shared{};
    InitializeCriticalSection(&shared.Section);
    HANDLE threads[2];
    for (HANDLE& thread : threads) {
        thread = CreateThread(
            nullptr, 0,
            [](LPVOID argument) -> DWORD {
                auto* both = static_cast<Shared*>(argument);
                for (int i = 0; i < 1000; ++i) {
                    EnterCriticalSection(&both->Section);
                    EnterCriticalSection(&both->Section);
                    ++both->Counter;
                    LeaveCriticalSection(&both->Section);
                    LeaveCriticalSection(&both->Section);
                }
                return 0;
            },
            &shared, 0, nullptr);
    }
    WaitForMultipleObjects(2, threads, TRUE, INFINITE);
    EXPECT_EQ(shared.Counter, 2000);
    DeleteCriticalSection(&shared.Section);
    CloseHandle(threads[0]);
    CloseHandle(threads[1]);
}

TEST(Interlocked, AnswersTheDocumentedOfOldAndNewValue) {
    LONG value = 5;
    EXPECT_EQ(InterlockedIncrement(&value), 6);
    EXPECT_EQ(InterlockedDecrement(&value), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&value, -15), 5);
    EXPECT_EQ(InterlockedExchange(&value, 3), -10);
    EXPECT_EQ(InterlockedCompareExchange(&value, 9, 4), 3);
    EXPECT_EQ(InterlockedCompareExchange(&value, 9, 3), 3);
    EXPECT_EQ(value, 9);
}

TEST(GlobalMemory, FixedBlockIsItsAddressAndDoesNotMoveUnasked) {
    const HGLOBAL block = GlobalAlloc(GMEM_SHARE | GMEM_ZEROINIT, 64);
    auto* data = static_cast<char*>(GlobalLock(block));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(block, static_cast<HGLOBAL>(data));
    EXPECT_EQ(data[63], 0);
    EXPECT_TRUE(GlobalUnlock(block)) << "always locked";
    std::strcpy(data, "kept");

    EXPECT_EQ(GlobalReAlloc(block, 16, 0), block);
    EXPECT_EQ(GlobalReAlloc(block, 1 << 20, 0), nullptr) << "no room to grow without moving";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_STREQ(data, "kept") << "a failed resize leaves the block as it was";

    const HGLOBAL moved = GlobalReAlloc(block, 1 << 20, GMEM_MOVEABLE);
    ASSERT_NE(moved, nullptr);
    EXPECT_STREQ(static_cast<char*>(GlobalLock(moved)), "kept");
    EXPECT_GE(GlobalSize(moved), 1u << 20);
    EXPECT_EQ(GlobalFree(moved), nullptr);
}

TEST(GlobalMemory, MoveableBlockHasALockCount) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 32);
    void* data = GlobalLock(block);
    EXPECT_NE(data, static_cast<void*>(block));
    EXPECT_EQ(GlobalLock(block), data);
    EXPECT_EQ(GlobalHandle(data), block);
    EXPECT_EQ(GlobalReAlloc(block, 1 << 20, 0), nullptr) << "may not move while locked";
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR));
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_LOCKED));
    EXPECT_EQ(GlobalReAlloc(block, 1 << 20, 0), block);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(Heap, ZeroesOnRequest) {
    auto* memory = static_cast<BYTE*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, 4096));
    ASSERT_NE(memory, nullptr);
    for (int i = 0; i < 4096; ++i) {
        ASSERT_EQ(memory[i], 0);
    }
    EXPECT_TRUE(HeapFree(GetProcessHeap(), 0, memory));
}

TEST(PointerProbe, TellsGoodMemoryFromBad) {
    int good = 0;
    EXPECT_FALSE(IsBadReadPtr(&good, sizeof good));
    EXPECT_FALSE(IsBadWritePtr(&good, sizeof good));
    EXPECT_FALSE(IsBadReadPtr(nullptr, 0));
    EXPECT_TRUE(IsBadReadPtr(nullptr, 1));
    EXPECT_TRUE(IsBadWritePtr(nullptr, 1));
    EXPECT_TRUE(IsBadReadPtr(reinterpret_cast<void*>(ULONG_PTR{16}), 32));
    EXPECT_TRUE(IsBadReadPtr(&good, ~ULONG_PTR{0})) << "past the end of the address space";
    EXPECT_FALSE(IsBadReadPtr(TEXT("read-only"), 4));
    EXPECT_TRUE(IsBadWritePtr(const_cast<WCHAR*>(TEXT("read-only")), 4));
}

}  // namespace
