// A client of one wave device that keeps account of its headers, and knows which answers are the driver's to
// give. `Wave` is a WavePlayer or a WaveRecorder.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/reliability/tally.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"

// Every answer that an open may give when something fails under it.
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

inline MMRESULT ResetWave(WavePlayer& player) {
    return waveOutReset(player.Handle());
}
inline MMRESULT ResetWave(WaveRecorder& recorder) {
    return recorder.Reset();
}

template <typename Device>
class Client {
public:
    Device Wave;

    bool Open(UINT device, const WaveFormat& format) {
        const MMRESULT result = Wave.Open(device, format);
        opened_ = result == MMSYSERR_NOERROR;
        EXPECT_TRUE(opened_ || IsRefusalOfOpen(result)) << "open answers " << result;
        return opened_;
    }

    // The answer to the newest header: accepted, or still the client's.
    void HandedIn(MMRESULT result) {
        EXPECT_TRUE(result == MMSYSERR_NOERROR || result == MMSYSERR_NOMEM) << result;
        accepted_.push_back(result == MMSYSERR_NOERROR);
    }

    // A device that is busy says so; after a reset it never is.
    void Close() {
        MMRESULT result = Wave.Close();
        if (result == WAVERR_STILLPLAYING) {
            Always(ResetWave(Wave));
            result = Wave.Close();
        }
        Always(result);
    }

    // After the close: every header that the driver accepted has come back once and looks so, the others
    // have not; the client heard of the open first, of the close last, and of each once.
    void ExpectBalance() {
        if (!opened_) {
            EXPECT_TRUE(Wave.Messages().empty());
            return;
        }
        unsigned lost = 0;
        for (size_t i = 0; i < accepted_.size(); ++i) {
            const bool returned = (Wave.Header(i).dwFlags & (WHDR_DONE | WHDR_INQUEUE)) == WHDR_DONE;
            const bool balanced = Wave.DoneCount(i) == (accepted_[i] ? 1u : 0u) && returned == accepted_[i];
            EXPECT_TRUE(balanced) << "header " << i << (accepted_[i] ? " accepted" : " refused")
                                  << ", returned " << Wave.DoneCount(i) << " times";
            lost += balanced ? 0 : 1;
        }
        const std::vector<UINT> messages = Wave.Messages();
        EXPECT_EQ(messages.size(), 2 + Wave.DoneCount()) << "one open, one close";
        EXPECT_TRUE(messages.front() == WOM_OPEN || messages.front() == WIM_OPEN);
        EXPECT_TRUE(messages.back() == WOM_CLOSE || messages.back() == WIM_CLOSE);
        tally::Add(tally::HandedIn, accepted_.size());
        tally::Add(tally::Lost, lost);
    }

private:
    bool opened_ = false;
    std::vector<bool> accepted_;
};

using Player = Client<WavePlayer>;
using Recorder = Client<WaveRecorder>;
