// The requests that the card's kernel driver answers: their codes, and the layout of their buffers.
#pragma once

#include <windows.h>

#include <cstdint>

namespace simulator {

enum : uint32_t {
    BeginBuffer = 0x80002000,
    MapBuffer = 0x80002006,
    QueueBuffer = 0x80002008,
    StartTransfer = 0x8000200C,
    StopTransfer = 0x80002010,
    FlushBuffers = 0x80002014,
    SetBufferCookie = 0x80002018,
    GetPosition = 0x8000201C,
    DisarmChannel = 0x80002020,
    ArmChannel = 0x80002024,
    SetCompletionRoutine = 0x8000202C,
    Stall = 0x80002030,
    ReadClockFault = 0x80002034,
    ReadNvramPage = 0x800020B2,
    ReleaseChannel = 0x800020B8,
    AcquireChannel = 0x800020BC,
    ReadPciConfig = 0x800020C2,
    WritePciConfig = 0x800020C5,
    ReadRegister = 0x800020C8,
    WriteRegister = 0x800020CC,
    SoftReset = 0x80003FF0,
    GetRegistryPath = 0x80003FF4,
    BindHandle = 0x80003FF8,
};

inline constexpr uint32_t ControlChannel = 0xFFFFFFFF;
inline constexpr unsigned ChannelCount = 4;
inline constexpr unsigned FirstOutput = 2;
inline constexpr const char* ChannelNames[ChannelCount] = {"analog in", "digital in", "analog out",
                                                           "digital out"};

inline constexpr uint32_t IdentityPageAddress = 0xFF80;
inline constexpr uint32_t VersionPageAddress = 0xFF00;
inline constexpr uint32_t NvramPageSize = 128;
inline constexpr uint32_t PciConfigSize = 256;

struct RegisterRequest {
    uint32_t Register;
    uint32_t Width;  // always 8
    uint32_t Space;  // 0 the card, 1 the port of the bound channel
    uint32_t Value;
    uint32_t Mask;
};
static_assert(sizeof(RegisterRequest) == 20);

struct BindRequest {
    uint32_t Ordinal;
    uint32_t Channel;
};
static_assert(sizeof(BindRequest) == 8);

}  // namespace simulator
