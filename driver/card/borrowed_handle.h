// A handle for an operation on a card that is not tied to one stream.
#pragma once

#include "card/layers_above.h"

namespace kestvox {

// Borrows the device handle of one of this process's streams on the card or, when there is none, opens
// a control handle and closes it again at the end of the scope. Every request through the handle fails
// when neither can be had.
class BorrowedHandle {
public:
    explicit BorrowedHandle(CardRecord& card);
    ~BorrowedHandle();
    BorrowedHandle(const BorrowedHandle&) = delete;
    BorrowedHandle& operator=(const BorrowedHandle&) = delete;

    CardHandle* Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    StreamLoan loan_;
    CardHandle* handle_;
};

}  // namespace kestvox
