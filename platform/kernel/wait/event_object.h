// An event of this process.
#pragma once

#include "platform/kernel/wait/waitable.h"

namespace platform {

class EventObject : public Waitable {
public:
    static constexpr HandleKind ObjectKind = HandleKind::Event;

    EventObject(bool automatic, bool signalled) : Waitable(HandleKind::Event, automatic, signalled) {}
};

}  // namespace platform
