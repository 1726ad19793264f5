// One client of one input on a fresh machine.
#pragma once

#include "tests/support/driver_test.h"

class InputTest : public DriverTest {
protected:
    using DriverTest::DriverTest;

    // Plugs so many frames of noise into an input of card 0; the digital one takes them at the card's
    // rate. They are heard from the first frame that is recorded.
    std::vector<simulator::Frame> PlugIn(size_t frames, Port port = Port::Analog, unsigned seed = 7) {
        std::vector<simulator::Frame> signal = NoiseFrames(frames, seed);
        Cards().PlugIn(0, port, simulator::InputSignal::Run(signal));
        return signal;
    }
    void Open(const WaveFormat& format, UINT device = AnalogIn) {
        ASSERT_EQ(recorder_.Open(device, format), MMSYSERR_NOERROR);
    }
    void Add(size_t size, int count = 1, unsigned misalignment = 0) {
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(recorder_.Add(size, misalignment), MMSYSERR_NOERROR);
        }
    }
    // Time in which so many frames pass, and half a frame.
    void AdvanceFrames(unsigned frames, unsigned rate) {
        Cards().Advance((2 * frames + 1) * Second / (2 * rate));
    }
    // The end of a case: the next one finds the recorder as new.
    void CloseAndForget() {
        recorder_.OnDone(nullptr);
        recorder_.Shut();
        ExpectEachReturnedOnce();
        recorder_.Forget();
    }
    void ExpectEachReturnedOnce() { recorder_.ExpectEachReturnedOnce(); }

    WaveRecorder recorder_;
};
