// What the cards of a setting are doing, in words that compare.
#pragma once

#include <string>

#include "simulator/machine/machine_state.h"
#include "tests/interleaving/message.h"

namespace interleaving {

simulator::ChannelState ChannelOf(const StreamPlan& plan);

// For each stream: whether its channel is started, armed and held, at which rate and gains, and with
// `buffers` how many it has. Nothing that depends on when it is asked, and nothing of ports that nobody has
// open.
std::string DescribeCards(const Setting& setting, bool buffers);

}  // namespace interleaving
