#include "stream/stream_list.h"

#include "card/card_table.h"
#include "stream/header_queue.h"
#include "stream/stream_open.h"

namespace kestvox {

namespace {

StreamInstance* Head = nullptr;
CRITICAL_SECTION ListLock;

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

StreamLoan Lend(StreamInstance* stream) {
    if (stream == nullptr) {
        return {nullptr, nullptr};
    }
    ++stream->Loans;
    ++stream->References;
    return {stream, stream->Device};
}

// With a reference that the caller lets go.
StreamInstance* FindOpenStream(DWORD processId, DWORD ordinal) {
    ListGuard guard;
    StreamInstance* found = FindFrom(Head, [=](const StreamInstance& stream) {
        return stream.Closing == 0 && (processId == 0 || stream.OwnerProcessId == processId) &&
               (ordinal == NoCard || stream.Card->Ordinal == ordinal);
    });
    if (found != nullptr) {
        ++found->References;
    }
    return found;
}

// A stream that is on loan stays on the list, so its successor can be found from it.
StreamLoan LendNext(const StreamInstance* previous) {
    ListGuard guard;
    return Lend(FindFrom(previous != nullptr ? previous->Next : Head,
                         [](const StreamInstance& stream) { return stream.Lendable; }));
}

// Takes the channel back, prepares the port whatever its clock says, and starts it when it ran before the
// suspend or its client has asked for it since.
void ResumeStream(StreamInstance* stream) {
    const Direction& direction = *stream->Direction;
    TakeChannelBack(stream);
    direction.Prepare(stream, true);
    if (stream->PortFlag(direction.PortResumePending).exchange(0) != 0) {
        direction.Start(stream);
    }
    HandOver(stream, TransferRule::WhileRunning);
}

template <typename Action>
void ForEachStream(Action action) {
    StreamLoan loan = LendNext(nullptr);
    while (loan.Lender != nullptr) {
        action(loan.Lender);
        const StreamLoan next = LendNext(loan.Lender);
        ReturnLoan(loan);
        loan = next;
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
    return Lend(FindFrom(
        Head, [&card](const StreamInstance& stream) { return stream.Card == &card && stream.Lendable; }));
}

void ReturnLoan(const StreamLoan& loan) {
    {
        ListGuard guard;
        --loan.Lender->Loans;
    }
    ReleaseStream(loan.Lender);
}

BOOL WithdrawDevice(StreamInstance* stream) {
    // A loan lasts one step of some operation. One that outlasts the limit belongs to a thread that was ended
    // in the middle of it, as at the end of a process, or to one that is held up: it has a reference.
    const DWORD start = timeGetTime();
    do {
        {
            ListGuard guard;
            stream->Lendable = false;
            if (stream->Loans == 0) {
                return TRUE;
            }
        }
        Sleep(1);
    } while (timeGetTime() - start < LongestLoan);
    return FALSE;
}

void CloseStreams(DWORD processId, DWORD ordinal) {
    while (StreamInstance* stream = FindOpenStream(processId, ordinal)) {
        stream->OpenFlags = 0;
        ForceCloseStream(stream);
        ReleaseStream(stream);
    }
}

void SuspendStreams() {
    ForEachStream([](StreamInstance* stream) { stream->Direction->Suspend(stream); });
}

void ResumeStreams() {
    ForEachStream(ResumeStream);
}

}  // namespace kestvox
