// One client of one output on a fresh machine.
#pragma once

#include "tests/support/driver_test.h"

class OutputTest : public DriverTest {
protected:
    static constexpr size_t BufferSize = 4000;  // 23 ms as Open has it, unless a test wants another

    void Open(const WaveFormat& format = PcmFormat(44100, 2, 16), UINT device = AnalogOut) {
        ASSERT_EQ(player_.Open(device, format), MMSYSERR_NOERROR);
        format_ = format;
    }
    // Each buffer of another pattern, whose seed is the buffer's number from 1 on.
    void Write(unsigned buffers = 1, size_t bytes = BufferSize) {
        for (unsigned i = 0; i < buffers; ++i) {
            const std::vector<BYTE> data = Pattern(bytes, static_cast<unsigned>(player_.HeaderCount()) + 1);
            ASSERT_EQ(player_.Write(data), MMSYSERR_NOERROR);
            written_.insert(written_.end(), data.begin(), data.end());
        }
    }
    // A second later all of that has been played.
    void ExpectAllPlayed() {
        Cards().Advance(Second);
        EXPECT_TRUE(Played() == Sound(format_, written_)) << Played().size() << " frames";
    }
    // The end of a case: the next one finds the card and the player as new.
    void CloseAndForget() {
        player_.OnDone(nullptr);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        ExpectEachReturnedOnce();
        player_.Forget();
        written_.clear();
        Cards().ClearFaults();
        Cards().ForgetAudio();
    }

    std::vector<simulator::Frame> Played(Port port = Port::Analog) { return Cards().Played(0, port); }
    simulator::OutputStatus Output() { return Cards().Output(0, Port::Analog); }

    MMRESULT Send(UINT message, DWORD_PTR first = 0, DWORD_PTR second = 0) {
        return waveOutMessage(player_.Handle(), message, first, second);
    }
    void ExpectEachReturnedOnce() { player_.ExpectEachReturnedOnce(); }

    WavePlayer player_;
    WaveFormat format_;          // that Open was given
    std::vector<BYTE> written_;  // by Write
};
