// A wave device as the multimedia system uses it, and an account of its headers.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "tests/interleaving/message.h"
#include "tests/support/driver_library.h"

namespace interleaving {

inline constexpr DWORD Rate = 44100;
inline constexpr DWORD OtherRate = 96000;

class Stream {
public:
    Stream(const DriverLibrary& driver, const StreamPlan& plan);

    bool IsOpen() const { return user_ != 0; }

    // On any thread, as the message is sent; a stream that is closed, or is being closed, is not sent
    // anything and answers as the multimedia system does.
    MMRESULT Send(Message message);
    MMRESULT Open(DWORD rate, WORD bits = 8);
    MMRESULT Write(DWORD length, DWORD flags = 0, DWORD loops = 0);

    // The next header that comes back runs this on the driver's thread.
    void OnNextDone(std::function<void()> action);

    // The driver has let the stream go without a word: nothing is sent any more, and no header comes back.
    void Orphan() { user_ = 0; }
    void Forget();

    // Headers that the driver has; and callbacks that should not have been: of headers that came back twice,
    // or though they were refused, and of a close that no open came before.
    unsigned Away() {
        return Count([](int away) { return away > 0; });
    }
    unsigned WrongCallbacks() {
        return Count([](int away) { return away < 0; }) + wrongCloses_;
    }

    static constexpr DWORD LongHeader = 15 * Rate;  // bytes of a header that does not end by itself meanwhile

private:
    struct Header {
        WAVEHDR Wave;
        std::atomic<int> Away;  // times that it was handed in and did not come back
    };

    MMRESULT Tell(UINT output, UINT input, DWORD_PTR first = 0, DWORD_PTR second = 0);
    MMRESULT Close();
    unsigned Count(bool (*wanted)(int away));
    void Returned(WAVEHDR* header);
    static void CALLBACK Callback(HDRVR device, UINT message, DWORD_PTR instance, DWORD_PTR first,
                                  DWORD_PTR second);

    const DriverLibrary& driver_;
    const StreamPlan plan_;
    std::atomic<DWORD_PTR> user_ = 0;
    std::atomic<bool> closing_ = false;
    std::atomic<bool> toldOfOpen_ = false;
    std::atomic<unsigned> wrongCloses_ = 0;
    const std::unique_ptr<char[]> recorded_;  // what all headers of an input take, one over the other
    std::mutex lock_;                         // of what follows
    std::vector<std::unique_ptr<Header>> headers_;
    std::function<void()> onNextDone_;
};

}  // namespace interleaving
