// A fresh machine whose computer goes to sleep and wakes up again.
#pragma once

#include <mmddk.h>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"

class PowerTest : public DriverTest {
protected:
    explicit PowerTest(unsigned cards = 2) : DriverTest(cards) {}

    LRESULT SendPower(LPARAM event) { return DriverLibrary().DriverProc(DRV_POWER, event); }

    void LosePower() {
        for (unsigned card = 0; card < Cards().CardCount(); ++card) {
            Cards().PowerCycle(card);
        }
    }
    void Sleep() {
        EXPECT_EQ(SendPower(PWR_SUSPENDREQUEST), 1);
        LosePower();
        Cards().Advance(Second);
    }
    void Wake(LPARAM event = PWR_SUSPENDRESUME) { EXPECT_EQ(SendPower(event), 1); }
};
