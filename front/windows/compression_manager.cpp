// Conversions by the system's audio compression manager. Its library is loaded when the first is asked for.
#include <windows.h>
#include <mmsystem.h>
#include <mmreg.h>

#include <msacm.h>

#include "front/host.h"

namespace front {

namespace {

struct Manager {
    decltype(&acmStreamOpen) Open = nullptr;
    decltype(&acmStreamClose) Close = nullptr;
    decltype(&acmStreamSize) Size = nullptr;
    decltype(&acmStreamPrepareHeader) Prepare = nullptr;
    decltype(&acmStreamUnprepareHeader) Unprepare = nullptr;
    decltype(&acmStreamConvert) Convert = nullptr;

    bool IsThere() const { return Open && Close && Size && Prepare && Unprepare && Convert; }
};

template <typename Function>
void Import(HMODULE library, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

Manager LoadManager() {
    Manager manager;
    if (const HMODULE library = LoadLibraryW(TEXT("msacm32.dll"))) {
        Import(library, "acmStreamOpen", &manager.Open);
        Import(library, "acmStreamClose", &manager.Close);
        Import(library, "acmStreamSize", &manager.Size);
        Import(library, "acmStreamPrepareHeader", &manager.Prepare);
        Import(library, "acmStreamUnprepareHeader", &manager.Unprepare);
        Import(library, "acmStreamConvert", &manager.Convert);
    }
    return manager;
}

const Manager& TheManager() {
    static const Manager manager = LoadManager();
    return manager;
}

class ManagedConversion : public Conversion {
public:
    ManagedConversion(HACMSTREAM stream, DWORD block) : stream_(stream), block_(block) {}
    ~ManagedConversion() override { TheManager().Close(stream_, 0); }
    ManagedConversion(const ManagedConversion&) = delete;
    ManagedConversion& operator=(const ManagedConversion&) = delete;

    DWORD Needed(DWORD size) const override {
        DWORD needed = 0;
        return TheManager().Size(stream_, size, &needed, ACM_STREAMSIZEF_DESTINATION) == MMSYSERR_NOERROR
                   ? needed
                   : 0;
    }

    size_t Convert(std::span<const BYTE> in, bool begins, std::vector<BYTE>& out) override {
        const auto whole = static_cast<DWORD>(in.size() - in.size() % block_);
        DWORD room = 0;
        if (whole == 0 ||
            TheManager().Size(stream_, whole, &room, ACM_STREAMSIZEF_SOURCE) != MMSYSERR_NOERROR) {
            return 0;
        }
        const size_t before = out.size();
        out.resize(before + room);
        ACMSTREAMHEADER header = {};
        header.cbStruct = sizeof header;
        header.pbSrc = const_cast<BYTE*>(in.data());
        header.cbSrcLength = whole;
        header.pbDst = out.data() + before;
        header.cbDstLength = room;
        const DWORD flags = ACM_STREAMCONVERTF_BLOCKALIGN | (begins ? ACM_STREAMCONVERTF_START : 0);
        const bool done = TheManager().Prepare(stream_, &header, 0) == MMSYSERR_NOERROR &&
                          TheManager().Convert(stream_, &header, flags) == MMSYSERR_NOERROR;
        out.resize(before + (done ? header.cbDstLengthUsed : 0));
        const DWORD used = done ? header.cbSrcLengthUsed : whole;
        header.cbSrcLength = whole;
        header.cbDstLength = room;
        TheManager().Unprepare(stream_, &header, 0);
        return used;
    }

private:
    HACMSTREAM stream_;
    DWORD block_;  // bytes of the format that it converts from
};

}  // namespace

namespace host {

std::unique_ptr<Conversion> OpenConversion(const WAVEFORMATEX& from, const WAVEFORMATEX& to) {
    HACMSTREAM stream = nullptr;
    if (from.nBlockAlign == 0 || !TheManager().IsThere() ||
        TheManager().Open(&stream, nullptr, const_cast<WAVEFORMATEX*>(&from), const_cast<WAVEFORMATEX*>(&to),
                          nullptr, 0, 0, ACM_STREAMOPENF_NONREALTIME) != MMSYSERR_NOERROR) {
        return nullptr;
    }
    return std::make_unique<ManagedConversion>(stream, from.nBlockAlign);
}

}  // namespace host

}  // namespace front
