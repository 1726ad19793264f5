#include "tools/streams/wave_error.h"

#include <algorithm>
#include <iterator>

namespace kestvox {
namespace {

struct WaveError {
    MMRESULT Result;
    const char* Name;
    const char* Meaning;
};

constexpr WaveError Errors[] = {
    {0, "MMSYSERR_NOERROR", "no error"},
    {1, "MMSYSERR_ERROR", "the card or its clock failed"},
    {2, "MMSYSERR_BADDEVICEID", "there is no such device"},
    {3, "MMSYSERR_NOTENABLED", "the device is not enabled"},
    {4, "MMSYSERR_ALLOCATED", "the device is already open"},
    {5, "MMSYSERR_INVALHANDLE", "the handle is not valid"},
    {6, "MMSYSERR_NODRIVER", "the driver or its card cannot be reached"},
    {7, "MMSYSERR_NOMEM", "there is not enough memory"},
    {8, "MMSYSERR_NOTSUPPORTED", "the function is not supported"},
    {9, "MMSYSERR_BADERRNUM", "there is no such error number"},
    {10, "MMSYSERR_INVALFLAG", "a flag is not valid"},
    {11, "MMSYSERR_INVALPARAM", "an argument is not valid"},
    {12, "MMSYSERR_HANDLEBUSY", "the handle is in use"},
    {13, "MMSYSERR_INVALIDALIAS", "there is no such alias"},
    {14, "MMSYSERR_BADDB", "the registry is damaged"},
    {15, "MMSYSERR_KEYNOTFOUND", "there is no such registry key"},
    {16, "MMSYSERR_READERROR", "the registry cannot be read"},
    {17, "MMSYSERR_WRITEERROR", "the registry cannot be written"},
    {18, "MMSYSERR_DELETEERROR", "the registry value cannot be deleted"},
    {19, "MMSYSERR_VALNOTFOUND", "there is no such registry value"},
    {20, "MMSYSERR_NODRIVERCB", "the driver makes no callback"},
    {21, "MMSYSERR_MOREDATA", "there is more data"},
    {32, "WAVERR_BADFORMAT", "the device does not accept the format now"},
    {33, "WAVERR_STILLPLAYING", "buffers are still playing"},
    {34, "WAVERR_UNPREPARED", "the header is not prepared"},
    {35, "WAVERR_SYNC", "the device is synchronous"},
};

const WaveError* FindError(MMRESULT result) {
    const auto* found = std::ranges::find(Errors, result, &WaveError::Result);
    return found == std::end(Errors) ? nullptr : found;
}

}  // namespace

std::string WaveErrorName(MMRESULT result) {
    const WaveError* error = FindError(result);
    return error ? std::string(error->Name) + " (" + std::to_string(result) + ")"
                 : "error " + std::to_string(result);
}

std::string DescribeWaveError(MMRESULT result) {
    const WaveError* error = FindError(result);
    return error ? WaveErrorName(result) + ": " + error->Meaning : WaveErrorName(result);
}

}  // namespace kestvox
