// How much of a sweep is made, and by which test of it.
#pragma once

// Where everything runs slower, one request or call in so many fails; which ones, the plain build covers.
#if defined(KESTVOX_SANITIZE_THREAD) || defined(KESTVOX_SANITIZE_ADDRESS)
inline constexpr unsigned Stride = 61;
#elif defined(_WIN32)
inline constexpr unsigned Stride = 23;
#else
inline constexpr unsigned Stride = 1;
#endif

// ... and a test with random steps, or with calls of one kind, makes a fourth of its rounds.
inline constexpr int RoundStep = Stride == 1 ? 1 : 4;

// Sweeps are made in pieces, each a test of its own of a second or two.
struct Piece {
    unsigned Number;
    unsigned Of;

    bool Has(unsigned turn) const { return turn % Of == Number; }
};
