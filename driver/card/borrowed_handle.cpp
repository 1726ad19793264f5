#include "card/borrowed_handle.h"

namespace kestvox {

BorrowedHandle::BorrowedHandle(CardRecord& card) : loan_(FindStreamByCard(card)), handle_(loan_.Handle) {
    if (loan_.Lender == nullptr) {
        OpenCardHandle(card, ControlChannel, &handle_);
    }
}

BorrowedHandle::~BorrowedHandle() {
    if (loan_.Lender != nullptr) {
        ReturnLoan(loan_);
    } else {
        CloseCardHandle(handle_);
    }
}

}  // namespace kestvox
