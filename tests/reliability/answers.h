// Which answers are the driver's to give, whatever fails under a message.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <algorithm>

inline bool IsRefusalOfOpen(MMRESULT result) {
    constexpr MMRESULT Refusals[] = {MMSYSERR_ERROR,     MMSYSERR_BADDEVICEID, MMSYSERR_NOTENABLED,
                                     MMSYSERR_ALLOCATED, MMSYSERR_NODRIVER,    MMSYSERR_NOMEM};
    return std::find(std::begin(Refusals), std::end(Refusals), result) != std::end(Refusals);
}

// Start, stop, pause, reset and the like succeed whatever becomes of their requests.
inline void Always(MMRESULT result) {
    EXPECT_EQ(result, static_cast<MMRESULT>(MMSYSERR_NOERROR));
}

// Positions and the PCI configuration may not be had.
inline void AtBest(MMRESULT result) {
    EXPECT_TRUE(result == MMSYSERR_NOERROR || result == MMSYSERR_ERROR) << result;
}
