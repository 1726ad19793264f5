#include "stream/stream_list.h"

#include "card/card_table.h"
#include "stream/service_thread.h"
#include "stream/stream_control.h"
#include "stream/stream_open.h"

namespace kestvox {

namespace {

StreamInstance* Head = nullptr;
CRITICAL_SECTION ListLock;
SharedCount WalkCount = 0;

constexpr DWORD LongestLoan = 5000;  // milliseconds

class ListGuard {
public:
    ListGuard() { EnterCriticalSection(&ListLock); }
    ~ListGuard() { LeaveCriticalSection(&ListLock); }
    ListGuard(const ListGuard&) = delete;
    ListGuard& operator=(const ListGuard&) = delete;
};

// The first stream from `stream` on that `matches`; the list's lock is held.
template <typename Predicate>
StreamInstance* FindFrom(StreamInstance* stream, Predicate matches) {
    while (stream != nullptr && !matches(*stream)) {
        stream = stream->Next;
    }
    return stream;
}

// The first stream that `matches`, with a reference that the caller lets go.
template <typename Predicate>
StreamInstance* Refer(Predicate matches) {
    ListGuard guard;
    StreamInstance* found = FindFrom(Head, matches);
    if (found != nullptr) {
        ++found->References;
    }
    return found;
}

DWORD NewWalk() {
    return static_cast<DWORD>(++WalkCount);
}

// One stream after the other is in use, and none while the next is looked for: it may be closed meanwhile,
// and others opened. A stream that a later walk has passed is left to that one.
template <typename Action>
void ForEachStream(DWORD walk, Action action) {
    const auto next = [walk] {
        return Refer([walk](StreamInstance& stream) {
            const bool ahead = static_cast<LONG>(walk - stream.Walk) > 0;
            stream.Walk = ahead ? walk : stream.Walk;
            return ahead;
        });
    };
    while (StreamInstance* stream = next()) {
        {
            StreamUse use(stream);
            action(stream);
        }
        ReleaseStream(stream);
    }
}

}  // namespace

void InitializeStreamList() {
    InitializeCriticalSection(&ListLock);
}

void DeleteStreamList() {
    DeleteCriticalSection(&ListLock);
}

void AddStream(StreamInstance* stream) {
    ListGuard guard;
    stream->Next = Head;
    stream->Lendable = true;
    Head = stream;
}

void RemoveStream(StreamInstance* stream) {
    ListGuard guard;
    for (StreamInstance** link = &Head; *link != nullptr; link = &(*link)->Next) {
        if (*link == stream) {
            *link = stream->Next;
            stream->Next = nullptr;
            return;
        }
    }
}

bool IsOpenHere(const CardRecord& card, const Direction& direction, DWORD port) {
    ListGuard guard;
    return FindFrom(Head, [&](const StreamInstance& stream) {
               return stream.Card == &card && stream.Direction == &direction && stream.Port == port;
           }) != nullptr;
}

StreamLoan FindStreamByCard(const CardRecord& card) {
    ListGuard guard;
    StreamInstance* lender = FindFrom(
        Head, [&card](const StreamInstance& stream) { return stream.Card == &card && stream.Lendable; });
    if (lender == nullptr) {
        return {nullptr, nullptr};
    }
    ++lender->Loans;
    ++lender->References;
    return {lender, lender->Device};
}

void ReturnLoan(const StreamLoan& loan) {
    {
        ListGuard guard;
        --loan.Lender->Loans;
    }
    SetEvent(loan.Lender->Progress);
    ReleaseStream(loan.Lender);
}

BOOL WithdrawDevice(StreamInstance* stream) {
    {
        ListGuard guard;
        stream->Lendable = false;
    }
    // A loan lasts one step of some operation. One that outlasts the limit belongs to a thread that was ended
    // in the middle of it, as at the end of a process, or to one that is held up: it has a reference.
    return AwaitProgress(stream, OnServiceThread() ? 0 : LongestLoan,
                         [](StreamInstance* lender) { return lender->Loans == 0; });
}

void CloseStreams(DWORD processId, DWORD ordinal) {
    const auto matches = [=](const StreamInstance& stream) {
        return stream.Closing == 0 && stream.Opening == 0 &&
               (processId == 0 || stream.OwnerProcessId == processId) &&
               (ordinal == NoCard || stream.Card->Ordinal == ordinal);
    };
    while (StreamInstance* stream = Refer(matches)) {
        {
            StreamUse use(stream);
            stream->OpenFlags = 0;
            ForceCloseStream(stream);
        }
        ReleaseStream(stream);
    }
}

void SuspendStreams() {
    ForEachStream(NewWalk(), SuspendStream);
}

void ResumeStreams() {
    const DWORD first = NewWalk();
    const DWORD second = NewWalk();  // a suspend that comes in between is later than both
    ForEachStream(first, SuspendUnprepared);
    ForEachStream(second, ResumeStream);
}

}  // namespace kestvox
