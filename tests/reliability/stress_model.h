// What the threads of the stress run share.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <condition_variable>
#include <mutex>

// Held by several together or by one alone: a SharedLockable. std::shared_mutex, as the compiler for Windows
// has it, lets in one alone while others are there.
class UseLock {
public:
    void lock() { Enter(0, -1); }
    void unlock() { Leave(1); }
    void lock_shared() { Enter(INT_MAX, 1); }
    void unlock_shared() { Leave(-1); }

private:
    void Enter(int most, int change) {
        std::unique_lock hold(lock_);
        changed_.wait(hold, [&] { return users_ >= 0 && users_ <= most; });
        users_ += change;
    }
    void Leave(int change) {
        const std::lock_guard hold(lock_);
        users_ += change;
        changed_.notify_all();
    }

    std::mutex lock_;
    std::condition_variable changed_;
    int users_ = 0;  // -1: one alone
};

// Headers that any thread may hand in and the driver's thread brings back: the model counts both, and tells
// of a header that comes back without having been handed in.
class HeaderPool {
public:
    static constexpr unsigned Count = 12;
    static constexpr DWORD Bytes = 960;

    HeaderPool() {
        for (unsigned i = 0; i < Count; ++i) {
            places_[i].Header.lpData = places_[i].Data.data();
            places_[i].Header.dwUser = i;
        }
    }
    HeaderPool(const HeaderPool&) = delete;
    HeaderPool& operator=(const HeaderPool&) = delete;

    // One that the client has, now to be handed in: the first from number `turn` on. Null when the driver
    // has them all.
    WAVEHDR* Take(unsigned turn, DWORD flags, DWORD loops) {
        for (unsigned i = 0; i < Count; ++i) {
            Place& place = places_[(turn + i) % Count];
            if (!place.Away.exchange(true)) {
                place.Header.dwBufferLength = Bytes;
                place.Header.dwFlags = WHDR_PREPARED | flags;
                place.Header.dwLoops = loops;
                ++handedIn_;
                return &place.Header;
            }
        }
        return nullptr;
    }
    // The driver did not take it.
    void Refused(WAVEHDR& header) {
        --handedIn_;
        PlaceOf(header).Away = false;
    }
    // The driver brings it back.
    void Returned(WAVEHDR& header) { unexpected_ += PlaceOf(header).Away.exchange(false) ? 0 : 1; }

    bool AllAreBack() const {
        return std::none_of(places_.begin(), places_.end(),
                            [](const Place& place) { return place.Away.load(); });
    }
    unsigned HandedIn() const { return handedIn_; }
    unsigned Unexpected() const { return unexpected_; }  // came back, but not from the driver

private:
    struct Place {
        WAVEHDR Header;
        alignas(4) std::array<char, Bytes> Data;
        std::atomic<bool> Away;  // the driver has it
    };
    Place& PlaceOf(const WAVEHDR& header) { return places_[header.dwUser]; }

    std::array<Place, Count> places_ = {};
    std::atomic<unsigned> handedIn_ = 0;
    std::atomic<unsigned> unexpected_ = 0;
};
