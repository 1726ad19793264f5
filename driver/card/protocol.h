// The device-control protocol of the card's kernel driver: request codes and buffers.
// Everything is little-endian. An address travels as one ULONG_PTR, which is 4 bytes on the product.
#pragma once

#include <windows.h>

#include <cstddef>

namespace kestvox {

inline constexpr DWORD IoctlBuffered = 0;
inline constexpr DWORD IoctlInDirect = 1;
inline constexpr DWORD IoctlOutDirect = 2;

// Device type 0x8000, any access.
constexpr DWORD IoctlCode(DWORD function, DWORD method) {
    return 0x80000000u + function * 4 + method;
}

// Streaming and timing
inline constexpr DWORD IOCTL_BEGIN_BUFFER = IoctlCode(0x800, IoctlBuffered);
inline constexpr DWORD IOCTL_MAP_BUFFER = IoctlCode(0x801, IoctlOutDirect);
inline constexpr DWORD IOCTL_QUEUE_BUFFER = IoctlCode(0x802, IoctlBuffered);
inline constexpr DWORD IOCTL_START_TRANSFER = IoctlCode(0x803, IoctlBuffered);
inline constexpr DWORD IOCTL_STOP_TRANSFER = IoctlCode(0x804, IoctlBuffered);
inline constexpr DWORD IOCTL_FLUSH_BUFFERS = IoctlCode(0x805, IoctlBuffered);
inline constexpr DWORD IOCTL_SET_BUFFER_COOKIE = IoctlCode(0x806, IoctlBuffered);
inline constexpr DWORD IOCTL_GET_POSITION = IoctlCode(0x807, IoctlBuffered);
inline constexpr DWORD IOCTL_DISARM_CHANNEL = IoctlCode(0x808, IoctlBuffered);
inline constexpr DWORD IOCTL_ARM_CHANNEL = IoctlCode(0x809, IoctlBuffered);
inline constexpr DWORD IOCTL_SET_COMPLETION_ROUTINE = IoctlCode(0x80B, IoctlBuffered);
inline constexpr DWORD IOCTL_STALL = IoctlCode(0x80C, IoctlBuffered);
inline constexpr DWORD IOCTL_READ_CLOCK_FAULT = IoctlCode(0x80D, IoctlBuffered);
// Hardware access
inline constexpr DWORD IOCTL_READ_NVRAM_PAGE = IoctlCode(0x82C, IoctlOutDirect);
inline constexpr DWORD IOCTL_RELEASE_CHANNEL = IoctlCode(0x82E, IoctlBuffered);
inline constexpr DWORD IOCTL_ACQUIRE_CHANNEL = IoctlCode(0x82F, IoctlBuffered);
inline constexpr DWORD IOCTL_READ_PCI_CONFIG = IoctlCode(0x830, IoctlOutDirect);
inline constexpr DWORD IOCTL_WRITE_PCI_CONFIG = IoctlCode(0x831, IoctlInDirect);
inline constexpr DWORD IOCTL_READ_REGISTER = IoctlCode(0x832, IoctlBuffered);
inline constexpr DWORD IOCTL_WRITE_REGISTER = IoctlCode(0x833, IoctlBuffered);
// Driver-level control
inline constexpr DWORD IOCTL_SOFT_RESET = IoctlCode(0xFFC, IoctlBuffered);
inline constexpr DWORD IOCTL_GET_REGISTRY_PATH = IoctlCode(0xFFD, IoctlBuffered);
inline constexpr DWORD IOCTL_BIND_HANDLE = IoctlCode(0xFFE, IoctlBuffered);

static_assert(IOCTL_BEGIN_BUFFER == 0x80002000 && IOCTL_MAP_BUFFER == 0x80002006);
static_assert(IOCTL_QUEUE_BUFFER == 0x80002008 && IOCTL_START_TRANSFER == 0x8000200C);
static_assert(IOCTL_STOP_TRANSFER == 0x80002010 && IOCTL_FLUSH_BUFFERS == 0x80002014);
static_assert(IOCTL_SET_BUFFER_COOKIE == 0x80002018 && IOCTL_GET_POSITION == 0x8000201C);
static_assert(IOCTL_DISARM_CHANNEL == 0x80002020 && IOCTL_ARM_CHANNEL == 0x80002024);
static_assert(IOCTL_SET_COMPLETION_ROUTINE == 0x8000202C && IOCTL_STALL == 0x80002030);
static_assert(IOCTL_READ_CLOCK_FAULT == 0x80002034 && IOCTL_READ_NVRAM_PAGE == 0x800020B2);
static_assert(IOCTL_RELEASE_CHANNEL == 0x800020B8 && IOCTL_ACQUIRE_CHANNEL == 0x800020BC);
static_assert(IOCTL_READ_PCI_CONFIG == 0x800020C2 && IOCTL_WRITE_PCI_CONFIG == 0x800020C5);
static_assert(IOCTL_READ_REGISTER == 0x800020C8 && IOCTL_WRITE_REGISTER == 0x800020CC);
static_assert(IOCTL_SOFT_RESET == 0x80003FF0 && IOCTL_GET_REGISTRY_PATH == 0x80003FF4);
static_assert(IOCTL_BIND_HANDLE == 0x80003FF8);

// Input of IOCTL_READ_REGISTER and IOCTL_WRITE_REGISTER; a read ignores Value and Mask.
struct RegisterRequest {
    DWORD Register;
    DWORD Width;  // bits, always 8
    DWORD Space;  // RegisterSpace
    DWORD Value;
    DWORD Mask;
};
static_assert(sizeof(RegisterRequest) == 20);
static_assert(offsetof(RegisterRequest, Width) == 4 && offsetof(RegisterRequest, Space) == 8);
static_assert(offsetof(RegisterRequest, Value) == 12 && offsetof(RegisterRequest, Mask) == 16);

// Input of IOCTL_BIND_HANDLE.
struct BindRequest {
    DWORD Ordinal;
    DWORD Channel;
};
static_assert(sizeof(BindRequest) == 8 && offsetof(BindRequest, Channel) == 4);

enum RegisterSpace : DWORD {
    CardSpace = 0,  // the card's own registers
    PortSpace = 1,  // those of the port that the handle's channel belongs to
};

// Channels of a card: port for input, 2 + port for output; ControlChannel claims none.
inline constexpr DWORD InputChannel = 0;
inline constexpr DWORD OutputChannel = 2;
inline constexpr DWORD ControlChannel = 0xFFFFFFFF;

inline constexpr DWORD NvramPageSize = 128;
inline constexpr DWORD NvramVersionPage = 0xFF00;
inline constexpr DWORD NvramIdentityPage = 0xFF80;

}  // namespace kestvox
