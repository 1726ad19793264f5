// The texts of the wave calls' results.
#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <iterator>

namespace {

struct ErrorText {
    MMRESULT Error;
    LPCWSTR Text;
};

constexpr ErrorText kErrorTexts[] = {
    {MMSYSERR_NOERROR, u"No error."},
    {MMSYSERR_ERROR, u"The device or its driver failed for a reason it does not tell."},
    {MMSYSERR_BADDEVICEID, u"There is no device with this number."},
    {MMSYSERR_NOTENABLED, u"The driver has not been enabled."},
    {MMSYSERR_ALLOCATED, u"The device is already in use."},
    {MMSYSERR_INVALHANDLE, u"The device handle is not valid."},
    {MMSYSERR_NODRIVER, u"The driver is not there."},
    {MMSYSERR_NOMEM, u"There is not enough memory."},
    {MMSYSERR_NOTSUPPORTED, u"The driver does not support this function."},
    {MMSYSERR_BADERRNUM, u"The error number is not known."},
    {MMSYSERR_INVALFLAG, u"An invalid flag was passed."},
    {MMSYSERR_INVALPARAM, u"An invalid parameter was passed."},
    {MMSYSERR_HANDLEBUSY, u"The handle is in use by another thread."},
    {WAVERR_BADFORMAT, u"The device does not support this wave format."},
    {WAVERR_STILLPLAYING, u"Buffers are still in use by the device."},
    {WAVERR_UNPREPARED, u"The buffer's header has not been prepared."},
    {WAVERR_SYNC, u"The device works only synchronously."},
};

MMRESULT GetErrorText(MMRESULT error, LPWSTR text, UINT size) {
    if (!text) {
        return MMSYSERR_INVALPARAM;
    }
    const auto* const found = std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts),
                                           [error](const ErrorText& entry) { return entry.Error == error; });
    if (found == std::end(kErrorTexts)) {
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
