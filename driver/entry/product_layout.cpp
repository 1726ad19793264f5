// The sizes and offsets that the multimedia system and the kernel driver fix. Structures with pointers in
// them are laid out as fixed only by the 32-bit product: a build for another pointer size is not held to
// those.
#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>
#include <mmreg.h>

#include <cstddef>

#include "card/card_handle.h"

namespace kestvox {

namespace {

constexpr bool IsProduct = sizeof(void*) == 4;

struct Place {
    size_t Here;
    size_t OnProduct;
};

constexpr Place PlacesByPointerSize[] = {
    {sizeof(ULONG_PTR), 4},
    {sizeof(OVERLAPPED), 20},
    {sizeof(SECURITY_ATTRIBUTES), 12},

    {sizeof(WAVEHDR), 32},
    {offsetof(WAVEHDR, lpData), 0},
    {offsetof(WAVEHDR, dwBufferLength), 4},
    {offsetof(WAVEHDR, dwBytesRecorded), 8},
    {offsetof(WAVEHDR, dwUser), 12},
    {offsetof(WAVEHDR, dwFlags), 16},
    {offsetof(WAVEHDR, dwLoops), 20},
    {offsetof(WAVEHDR, lpNext), 24},
    {offsetof(WAVEHDR, reserved), 28},

    {sizeof(WAVEOPENDESC), 24},
    {offsetof(WAVEOPENDESC, lpFormat), 4},
    {offsetof(WAVEOPENDESC, dwCallback), 8},
    {offsetof(WAVEOPENDESC, dwInstance), 12},
};

constexpr size_t NoRow = static_cast<size_t>(-1);

// The first row that differs from the product, so that the compiler's message tells which it is.
template <size_t Count>
constexpr size_t FirstDifference(const Place (&places)[Count]) {
    for (size_t row = 0; row < Count; ++row) {
        if (places[row].Here != places[row].OnProduct) {
            return row;
        }
    }
    return NoRow;
}

constexpr size_t DifferentRow = IsProduct ? FirstDifference(PlacesByPointerSize) : NoRow;
static_assert(DifferentRow == NoRow);

static_assert(sizeof(MMTIME) == 12 && offsetof(MMTIME, u) == 4);
static_assert(sizeof(WAVEOUTCAPSW) == 84 && offsetof(WAVEOUTCAPSW, szPname) == 8);
static_assert(offsetof(WAVEOUTCAPSW, dwFormats) == 72 && offsetof(WAVEOUTCAPSW, wChannels) == 76);
static_assert(offsetof(WAVEOUTCAPSW, dwSupport) == 80);
static_assert(sizeof(WAVEINCAPSW) == 80 && offsetof(WAVEINCAPSW, dwFormats) == 72);
static_assert(sizeof(WAVEFORMATEX) == 18 && offsetof(WAVEFORMATEX, cbSize) == 16);
static_assert(sizeof(WAVEFORMATEXTENSIBLE) == 40 && offsetof(WAVEFORMATEXTENSIBLE, SubFormat) == 24);

}  // namespace

}  // namespace kestvox
