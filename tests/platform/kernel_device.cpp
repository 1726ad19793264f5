// Device files: what a device's driver sees of the calls, and what the caller sees of its answers.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/device.h"
#include "platform/inspect.h"

namespace {

constexpr DWORD Echo = CTL_CODE(0x8000, 0x801, METHOD_BUFFERED, FILE_ANY_ACCESS);
constexpr DWORD StayPending = CTL_CODE(0x8000, 0x802, METHOD_BUFFERED, FILE_ANY_ACCESS);
constexpr DWORD CloseMeanwhile = CTL_CODE(0x8000, 0x803, METHOD_BUFFERED, FILE_ANY_ACCESS);

class EchoDriver : public device::Driver {
public:
    DWORD Open(const WCHAR* path, void** file) override {
        if (std::u16string_view(path) != TEXT("\\\\.\\Echo0")) {
            return ERROR_FILE_NOT_FOUND;
        }
        *file = this;
        return ERROR_SUCCESS;
    }

    void Close(void* file) override {
        EXPECT_EQ(file, this);
        ++Closes;
    }

    DWORD Control(void* file, device::Request& request) override {
        EXPECT_EQ(file, this);
        switch (request.Code) {
        case Echo:
            if (Event != nullptr) {
                EventWasReset = WaitForSingleObject(Event, 0) == WAIT_TIMEOUT;
            }
            request.BytesReturned = std::min(request.InputLength, request.OutputLength);
            std::memcpy(request.Output, request.Input, request.BytesReturned);
            return ERROR_SUCCESS;
        case StayPending:
            return ERROR_IO_PENDING;
        case CloseMeanwhile:
            EXPECT_TRUE(CloseHandle(Device));
            EXPECT_EQ(Closes, 0) << "closed under a running request";
            return ERROR_SUCCESS;
        default:
            return ERROR_INVALID_FUNCTION;
        }
    }

    int Closes = 0;
    HANDLE Device = nullptr;
    HANDLE Event = nullptr;
    bool EventWasReset = false;
};

HANDLE OpenDevice(const WCHAR* path, DWORD flags) {
    return CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags, nullptr);
}

class DeviceFile : public testing::Test {
protected:
    DeviceFile() {
        platform::InstallDeviceDriver(&driver_);
        driver_.Device = OpenDevice(TEXT("\\\\.\\Echo0"), FILE_FLAG_OVERLAPPED);
        overlapped_.hEvent = driver_.Event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~DeviceFile() override {
        CloseHandle(driver_.Device);
        CloseHandle(driver_.Event);
        platform::InstallDeviceDriver(nullptr);
    }

    BOOL Send(DWORD code, OVERLAPPED* overlapped) {
        bytes_ = 77;
        return DeviceIoControl(driver_.Device, code, input_, sizeof input_, output_, sizeof output_, &bytes_,
                               overlapped);
    }

    bool EventIsSet() const { return WaitForSingleObject(driver_.Event, 0) == WAIT_OBJECT_0; }

    EchoDriver driver_;
    OVERLAPPED overlapped_{};
    char input_[8] = "request";
    char output_[4] = {};
    DWORD bytes_ = 0;
};

TEST_F(DeviceFile, ReportsSuccessThroughTheOverlappedStructure) {
    SetEvent(driver_.Event);
    EXPECT_TRUE(Send(Echo, &overlapped_));
    EXPECT_TRUE(driver_.EventWasReset) << "before the driver is called";
    EXPECT_EQ(bytes_, 4u);
    EXPECT_EQ(std::string(output_, 4), "requ");
    EXPECT_EQ(overlapped_.Internal, 0u);
    EXPECT_EQ(overlapped_.InternalHigh, 4u);
    EXPECT_TRUE(EventIsSet());
}

TEST_F(DeviceFile, FailureAndPendingLeaveTheEventReset) {
    SetEvent(driver_.Event);
    EXPECT_FALSE(Send(0x80001234, &overlapped_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    EXPECT_FALSE(EventIsSet());

    SetEvent(driver_.Event);
    EXPECT_FALSE(Send(StayPending, &overlapped_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_EQ(overlapped_.Internal, STATUS_PENDING);
    EXPECT_EQ(bytes_, 0u) << "nothing came back that a caller could take for an answer";
    EXPECT_FALSE(EventIsSet());
}

TEST_F(DeviceFile, IsClosedOnceAndNotUnderARequest) {
    EXPECT_TRUE(Send(CloseMeanwhile, &overlapped_));
    EXPECT_EQ(driver_.Closes, 1);
    EXPECT_FALSE(Send(Echo, &overlapped_));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(CloseHandle(driver_.Device));
    EXPECT_EQ(driver_.Closes, 1);
}

}  // namespace
