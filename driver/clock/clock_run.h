// One run of clock programming. sample_clock.cpp has the order of its steps; a step's result ends the run
// when it is not MMSYSERR_NOERROR. A card of the group without a handle ends it with MMSYSERR_NODRIVER.
#pragma once

#include "card/rates.h"
#include "stream/stream_instance.h"

namespace kestvox {

struct ClockRun {
    StreamInstance* Stream;
    CardRecord* Master;
    const CardRate* Rate;
    bool Checked;       // a clock or rate that is not right ends the run
    bool Resuming;      // at a resume: a card that is not there is left out
    bool Slaves;        // the group has cards other than the master
    bool Changed;       // a clock or link setting of the group changed: all of its cards resynchronise
    bool DigitalInput;  // the master runs on its digital input
};

// run_group.cpp: which cards take part, the link, and the end of the run
MMRESULT MarkGroup(ClockRun& run);
MMRESULT SettleLink(ClockRun& run);
MMRESULT LeaveOldClocks(ClockRun& run);
MMRESULT ResynchroniseCards(ClockRun& run);
MMRESULT ReleaseCards(ClockRun& run);

// run_master.cpp
MMRESULT ProgramMasterRate(ClockRun& run);
MMRESULT SwitchMasterSource(ClockRun& run);
MMRESULT CheckIncomingRate(ClockRun& run);
MMRESULT FinishMaster(ClockRun& run);

// run_followers.cpp
MMRESULT ProgramFollowers(ClockRun& run);

// Shared by master and followers:

// Tells whether the card had another rate before.
BOOL ProgramRate(CardHandle* handle, const CardRate& rate);

void SetInternalClock(CardHandle* handle, CardRecord& card);

// As it has to be for every clock source but the digital input.
void SwitchReceiverOff(CardHandle* handle);

// Whether the clock that has just been selected is not valid; waits 10 sample periods first.
BOOL ClockFailsAfterSwitch(CardHandle* handle, const CardRate& rate);

// A wait of so many sample periods at the run's rate.
void WaitPeriods(const ClockRun& run, DWORD periods);

}  // namespace kestvox
