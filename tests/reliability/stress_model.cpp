#include "tests/reliability/stress_model.h"

HeaderPool::HeaderPool() {
    for (unsigned i = 0; i < Count; ++i) {
        places_[i].Header.lpData = places_[i].Data.data();
        places_[i].Header.dwUser = i;
    }
}

WAVEHDR* HeaderPool::Take(unsigned turn, DWORD flags, DWORD loops) {
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

void HeaderPool::Refused(WAVEHDR& header) {
    --handedIn_;
    PlaceOf(header).Away = false;
}

void HeaderPool::Returned(WAVEHDR& header) {
    if (!PlaceOf(header).Away.exchange(false)) {
        ++unexpected_;
    }
}

bool HeaderPool::AllAreBack() const {
    for (const Place& place : places_) {
        if (place.Away) {
            return false;
        }
    }
    return true;
}
