#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "card/registers.h"
#include "format/wave_format.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

const Direction OutputDirection = {
    .FirstChannel = OutputChannel,
    .HoldBit = OutputHold,
    .OpenMessage = WOM_OPEN,
    .CloseMessage = WOM_CLOSE,
    .DoneMessage = WOM_DONE,
    .WholeWords = false,
    .OpenCount = &CardRecord::OpenOutputs,
    .RunningCount = &CardRecord::RunningOutputs,
    .WakingCount = &CardRecord::WakingOutputs,
    .OtherOpenCount = &CardRecord::OpenInputs,
    .OtherRunningCount = &CardRecord::RunningInputs,
    .OtherWakingCount = &CardRecord::WakingInputs,
    .PortOpen = &CardRecord::OutputOpen,
    .PortRunning = &CardRecord::OutputRunning,
    .PortPaused = &CardRecord::OutputPaused,
    .PortResumePending = &CardRecord::OutputResumePending,
    .PortCounted = &CardRecord::OutputCounted,
    .PortClockMaster = &CardRecord::OutputClockMaster,
    .AcceptFormat = AcceptOutputFormat,
    .InitializeFields = InitializeOutputFields,
    .Prepare = PrepareOutput,
    .CleanUp = CleanUpOutput,
    .Reset = ResetOutput,
    .BeginRun = [](StreamInstance*) {},
    .StopForSleep = StopOutputForSleep,
    .MarkHeader = StampLoop,
    .FillShadowBuffer = FillOutputBuffer,
    .TakeNext = TakeNextOutput,
    .OnBufferDone = OutputBufferDone,
};

}  // namespace kestvox
