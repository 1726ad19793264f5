// The results of the multimedia calls, by name.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <string>

namespace kestvox {

// "WAVERR_BADFORMAT (32): the format is not supported", or "error 77" for a number that no result has.
std::string DescribeWaveError(MMRESULT result);

// "WAVERR_BADFORMAT (32)".
std::string WaveErrorName(MMRESULT result);

}  // namespace kestvox
