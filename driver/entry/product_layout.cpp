// The sizes and offsets that the multimedia system and the kernel driver fix for the 32-bit product. A
// build for another pointer size has its own, so only the product is held to them.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>
#include <mmreg.h>

#include <cstddef>

#include "card/card_handle.h"

namespace kestvox {

namespace {

constexpr bool NotProduct = sizeof(void*) != 4;

static_assert(NotProduct || sizeof(ULONG_PTR) == 4);
static_assert(NotProduct || sizeof(OVERLAPPED) == 20);
static_assert(NotProduct || sizeof(SECURITY_ATTRIBUTES) == 12);

static_assert(NotProduct || sizeof(WAVEHDR) == 32);
static_assert(NotProduct || offsetof(WAVEHDR, lpData) == 0);
static_assert(NotProduct || offsetof(WAVEHDR, dwBufferLength) == 4);
static_assert(NotProduct || offsetof(WAVEHDR, dwBytesRecorded) == 8);
static_assert(NotProduct || offsetof(WAVEHDR, dwUser) == 12);
static_assert(NotProduct || offsetof(WAVEHDR, dwFlags) == 16);
static_assert(NotProduct || offsetof(WAVEHDR, dwLoops) == 20);
static_assert(NotProduct || offsetof(WAVEHDR, lpNext) == 24);
static_assert(NotProduct || offsetof(WAVEHDR, reserved) == 28);

static_assert(NotProduct || sizeof(WAVEOPENDESC) == 24);
static_assert(NotProduct || offsetof(WAVEOPENDESC, lpFormat) == 4);
static_assert(NotProduct || offsetof(WAVEOPENDESC, dwCallback) == 8);
static_assert(NotProduct || offsetof(WAVEOPENDESC, dwInstance) == 12);

static_assert(sizeof(MMTIME) == 12 && offsetof(MMTIME, u) == 4);
static_assert(sizeof(WAVEOUTCAPSW) == 84 && offsetof(WAVEOUTCAPSW, szPname) == 8);
static_assert(offsetof(WAVEOUTCAPSW, dwFormats) == 72 && offsetof(WAVEOUTCAPSW, wChannels) == 76);
static_assert(offsetof(WAVEOUTCAPSW, dwSupport) == 80);
static_assert(sizeof(WAVEINCAPSW) == 80 && offsetof(WAVEINCAPSW, dwFormats) == 72);
static_assert(sizeof(WAVEFORMATEX) == 18 && offsetof(WAVEFORMATEX, cbSize) == 16);
static_assert(sizeof(WAVEFORMATEXTENSIBLE) == 40 && offsetof(WAVEFORMATEXTENSIBLE, SubFormat) == 24);

}  // namespace

}  // namespace kestvox
