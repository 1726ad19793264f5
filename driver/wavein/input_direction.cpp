#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "card/registers.h"
#include "format/wave_format.h"
#include "stream/header_queue.h"
#include "wavein/input_parts.h"
#include "wavein/wave_input.h"

namespace kestvox {

const Direction InputDirection = {
    .FirstChannel = InputChannel,
    .HoldBit = InputHold,
    .OpenMessage = WIM_OPEN,
    .CloseMessage = WIM_CLOSE,
    .DoneMessage = WIM_DATA,
    .WholeWords = true,
    .OpenCount = &CardRecord::OpenInputs,
    .RunningCount = &CardRecord::RunningInputs,
    .WakingCount = &CardRecord::WakingInputs,
    .OtherOpenCount = &CardRecord::OpenOutputs,
    .OtherRunningCount = &CardRecord::RunningOutputs,
    .OtherWakingCount = &CardRecord::WakingOutputs,
    .PortOpen = &CardRecord::InputOpen,
    .PortRunning = &CardRecord::InputRunning,
    .PortPaused = nullptr,
    .PortResumePending = &CardRecord::InputResumePending,
    .PortCounted = &CardRecord::InputCounted,
    .PortClockMaster = &CardRecord::InputClockMaster,
    .AcceptFormat = AcceptInputFormat,
    .InitializeFields = [](StreamInstance*) {},
    .Prepare = PrepareInput,
    .CleanUp = CleanUpInput,
    .Reset = ResetInput,
    .BeginRun = BeginRecording,
    .StopForSleep = StopInputForSleep,
    .MarkHeader = [](StreamInstance*, WAVEHDR* header, bool) { header->dwBytesRecorded = 0; },
    .FillShadowBuffer = FillInputBuffer,
    .TakeNext = TakePendingHeader,
    .OnBufferDone = CaptureBufferDone,
};

}  // namespace kestvox
