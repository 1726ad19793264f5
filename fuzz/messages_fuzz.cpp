// Any sequence of calls on an output and an input, by a client whose headers are counted: each header that
// the driver has taken comes back exactly once, by the close at the latest, and a close after a reset ends.
#include <windows.h>
#include <mmsystem.h>

#include <array>
#include <atomic>

#include "fuzz/fresh_machine.h"
#include "fuzz/input_bytes.h"

namespace {

constexpr unsigned HeaderCount = 8;
constexpr DWORD BufferBytes = 4096;

// What differs between an output and an input.
struct OutputCalls {
    using Handle = HWAVEOUT;
    static constexpr auto Open = waveOutOpen;
    static constexpr auto Close = waveOutClose;
    static constexpr auto Reset = waveOutReset;
    static constexpr auto Start = waveOutRestart;
    static constexpr auto Stop = waveOutPause;
    static constexpr auto Prepare = waveOutPrepareHeader;
    static constexpr auto Unprepare = waveOutUnprepareHeader;
    static constexpr auto HandIn = waveOutWrite;
    static constexpr auto Position = waveOutGetPosition;
    static constexpr UINT Done = WOM_DONE;
    static void Extra(Handle wave, DWORD value) {
        if (value & 1) {
            waveOutBreakLoop(wave);
        } else {
            waveOutSetVolume(wave, value);
        }
    }
};
struct InputCalls {
    using Handle = HWAVEIN;
    static constexpr auto Open = waveInOpen;
    static constexpr auto Close = waveInClose;
    static constexpr auto Reset = waveInReset;
    static constexpr auto Start = waveInStart;
    static constexpr auto Stop = waveInStop;
    static constexpr auto Prepare = waveInPrepareHeader;
    static constexpr auto Unprepare = waveInUnprepareHeader;
    static constexpr auto HandIn = waveInAddBuffer;
    static constexpr auto Position = waveInGetPosition;
    static constexpr UINT Done = WIM_DATA;
    static void Extra(Handle, DWORD) {}
};

template <typename Calls>
class Client {
public:
    Client() {
        for (Place& place : places_) {
            place.Header.lpData = place.Data.data();
        }
    }
    ~Client() {
        if (wave_ != nullptr) {
            Require(Calls::Reset(wave_) == MMSYSERR_NOERROR, "a reset is refused");
            Require(Close() == MMSYSERR_NOERROR, "a close after a reset is refused");
        }
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    // One call, whose arguments come from the input.
    void Act(InputBytes& input) {
        const unsigned action = input.TakeBelow(10);
        if (wave_ == nullptr) {
            Open(input);
            return;
        }
        Place& place = places_[input.TakeBelow(HeaderCount)];
        switch (action) {
        case 0:
            Close();
            break;
        case 1:
            Require(Calls::Reset(wave_) == MMSYSERR_NOERROR, "a reset is refused");
            break;
        case 2:
            Require(Calls::Start(wave_) == MMSYSERR_NOERROR, "a start is refused");
            break;
        case 3:
            Require(Calls::Stop(wave_) == MMSYSERR_NOERROR, "a stop is refused");
            break;
        case 4:
            AskPosition(input);
            break;
        case 5:
            Unprepare(place);
            break;
        case 6:
            Calls::Extra(wave_, input.Take<DWORD>());
            break;
        default:
            HandIn(place, input);
            break;
        }
    }

private:
    struct Place {
        WAVEHDR Header = {};
        std::array<char, BufferBytes> Data = {};
        std::atomic<bool> Away = false;  // the driver has it
    };

    static void CALLBACK Callback(typename Calls::Handle, UINT message, DWORD_PTR client, DWORD_PTR header,
                                  DWORD_PTR) {
        if (message == Calls::Done) {
            reinterpret_cast<Client*>(client)->Returned(*reinterpret_cast<WAVEHDR*>(header));
        }
    }
    void Returned(const WAVEHDR& header) {
        for (Place& place : places_) {
            if (&place.Header == &header) {
                Require(place.Away.exchange(false), "a header comes back that the driver did not have");
                return;
            }
        }
        Require(false, "a header comes back that is not the client's");
    }

    void Open(InputBytes& input) {
        constexpr DWORD Rates[] = {8000, 22050, 44100, 48000};
        const auto channels = static_cast<WORD>(1 + input.TakeBelow(2));
        const auto bytes = static_cast<WORD>(1 + input.TakeBelow(4));
        const DWORD rate = Rates[input.TakeBelow(4)];
        const auto frame = static_cast<WORD>(channels * bytes);
        const WAVEFORMATEX format = {
            WAVE_FORMAT_PCM, channels, rate, rate * frame, frame, static_cast<WORD>(bytes * 8), 0};
        Require(Calls::Open(&wave_, input.TakeBelow(2), &format, reinterpret_cast<DWORD_PTR>(&Callback),
                            reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION) == MMSYSERR_NOERROR ||
                    wave_ == nullptr,
                "a refused open gives a handle");
    }

    MMRESULT Close() {
        const MMRESULT result = Calls::Close(wave_);
        if (result == MMSYSERR_NOERROR) {
            wave_ = nullptr;
            for (const Place& place : places_) {
                Require(!place.Away, "a header is lost");
            }
        } else {
            Require(result == WAVERR_STILLPLAYING, "a close is refused for another reason");
        }
        return result;
    }

    void AskPosition(InputBytes& input) {
        MMTIME time = {};
        time.wType = 1u << input.TakeBelow(6);
        Require(Calls::Position(wave_, &time, sizeof time) == MMSYSERR_NOERROR, "no position");
    }

    void Unprepare(Place& place) {
        const bool away = place.Away;
        const MMRESULT result = Calls::Unprepare(wave_, &place.Header, sizeof place.Header);
        // It may come back between the two.
        Require(!(away && place.Away && result == MMSYSERR_NOERROR), "a header in the card is unprepared");
    }

    // With any length, loop marks and count; a header that the driver has already is left as it is, and must
    // be refused.
    void HandIn(Place& place, InputBytes& input) {
        const DWORD length = input.Take<uint16_t>() % (BufferBytes + 1);
        const DWORD loops = input.Take<uint8_t>();
        const uint8_t choice = input.Take<uint8_t>();
        if (place.Away) {
            Require(Calls::HandIn(wave_, &place.Header, sizeof place.Header) != MMSYSERR_NOERROR,
                    "a header is taken twice");
            return;
        }
        place.Header.dwBufferLength = length;
        place.Header.dwLoops = loops;
        if (choice & 1) {
            place.Header.dwFlags = 0;
        }
        if ((choice & 6) != 0) {
            Calls::Prepare(wave_, &place.Header, sizeof place.Header);
        }
        place.Header.dwFlags |= (choice & 8 ? WHDR_BEGINLOOP : 0u) | (choice & 16 ? WHDR_ENDLOOP : 0u);
        place.Away = true;
        if (Calls::HandIn(wave_, &place.Header, sizeof place.Header) != MMSYSERR_NOERROR) {
            Require(place.Away.exchange(false), "a refused header comes back");
        }
    }

    std::array<Place, HeaderCount> places_;
    typename Calls::Handle wave_ = nullptr;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InputBytes input(data, size);
    FreshMachine machine;
    Client<OutputCalls> output;
    Client<InputCalls> recording;
    while (!input.Empty()) {
        const uint8_t choice = input.Take<uint8_t>();
        if (choice & 1) {
            output.Act(input);
        } else {
            recording.Act(input);
        }
        machine.Cards().Advance((choice >> 1) * 500);
    }
    return 0;
}
