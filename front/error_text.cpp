// waveOutGetErrorText and waveInGetErrorText: the texts of the wave calls' results.
#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <iterator>

namespace {

struct ErrorText {
    MMRESULT Error;
    LPCWSTR Text;
};

constexpr ErrorText ErrorTexts[] = {
    {MMSYSERR_NOERROR, TEXT("No error.")},
    {MMSYSERR_ERROR, TEXT("The device or its driver failed for a reason it does not tell.")},
    {MMSYSERR_BADDEVICEID, TEXT("There is no device with this number.")},
    {MMSYSERR_NOTENABLED, TEXT("The driver has not been enabled.")},
    {MMSYSERR_ALLOCATED, TEXT("The device is already in use.")},
    {MMSYSERR_INVALHANDLE, TEXT("The device handle is not valid.")},
    {MMSYSERR_NODRIVER, TEXT("The driver is not there.")},
    {MMSYSERR_NOMEM, TEXT("There is not enough memory.")},
    {MMSYSERR_NOTSUPPORTED, TEXT("The driver does not support this function.")},
    {MMSYSERR_BADERRNUM, TEXT("The error number is not known.")},
    {MMSYSERR_INVALFLAG, TEXT("An invalid flag was passed.")},
    {MMSYSERR_INVALPARAM, TEXT("An invalid parameter was passed.")},
    {MMSYSERR_HANDLEBUSY, TEXT("The handle is in use by another thread.")},
    {WAVERR_BADFORMAT, TEXT("The device does not support this wave format.")},
    {WAVERR_STILLPLAYING, TEXT("Buffers are still in use by the device.")},
    {WAVERR_UNPREPARED, TEXT("The buffer's header has not been prepared.")},
    {WAVERR_SYNC, TEXT("The device works only synchronously.")},
};

MMRESULT GetErrorText(MMRESULT error, LPWSTR text, UINT size) {
    if (!text) {
        return MMSYSERR_INVALPARAM;
    }
    const auto* const found = std::find_if(std::begin(ErrorTexts), std::end(ErrorTexts),
                                           [error](const ErrorText& entry) { return entry.Error == error; });
    if (found == std::end(ErrorTexts)) {
        return MMSYSERR_BADERRNUM;
    }
    if (size > 0) {
        lstrcpynW(text, found->Text, static_cast<int>(std::min<UINT>(size, MAXERRORLENGTH)));
    }
    return MMSYSERR_NOERROR;
}

}  // namespace

MMRESULT WINAPI waveOutGetErrorTextW(MMRESULT error, LPWSTR text, UINT size) {
    return GetErrorText(error, text, size);
}

MMRESULT WINAPI waveInGetErrorTextW(MMRESULT error, LPWSTR text, UINT size) {
    return GetErrorText(error, text, size);
}
