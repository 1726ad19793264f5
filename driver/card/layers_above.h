// What the card layer asks of the layers above it, which implement these functions. Nothing else in the
// driver points upward.
#pragma once

namespace kestvox {

struct CardHandle;
struct CardRecord;
struct StreamInstance;

// A stream's device handle on loan. While it is out the stream is neither freed nor its handle closed.
struct StreamLoan {
    StreamInstance* Lender;  // null: no stream of this process has the card open
    CardHandle* Handle;
};

// The device handle of this process's most recently opened stream on `card`. Implemented by stream/.
StreamLoan FindStreamByCard(const CardRecord& card);
void ReturnLoan(const StreamLoan& loan);

// Fills the settings of a new record from the registry. Implemented by settings/.
void LoadCardSettings(CardRecord& card);

}  // namespace kestvox
