// An event of this process.
#pragma once

#include "platform/kernel/waitable.h"

namespace platform {

class EventObject : public Waitable {
public:
    static constexpr HandleKind kKind = HandleKind::Event;

    EventObject(bool automatic, bool signalled) : Waitable(HandleKind::Event, automatic, signalled) {}
};

}  // namespace platform
