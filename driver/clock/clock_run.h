// One run of clock programming, step by step. A step that returns a result ends the run when it is not
// MMSYSERR_NOERROR.
#pragma once

#include "card/rates.h"
#include "stream/stream_instance.h"

namespace kestvox {

struct ClockRun {
    StreamInstance* Stream;
    CardRecord* Master;
    const CardRate* Rate;
    bool Checked;       // a clock or rate that is not right ends the run
    bool Slaves;        // the group has cards other than the master
    bool Changed;       // a clock or link setting of the group changed: every card resynchronises
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

// Shared by master and followers
BOOL ProgramRate(CardHandle* handle, const CardRate& rate);  // whether the rate was another one
void SetInternalClock(CardHandle* handle, CardRecord& card);
void SwitchReceiverOff(CardHandle* handle);  // as for every source but the digital input
BOOL ClockFailsAfterSwitch(CardHandle* handle, const CardRate& rate);  // waits 10 sample periods first
void WaitPeriods(const ClockRun& run, DWORD periods);

}  // namespace kestvox
