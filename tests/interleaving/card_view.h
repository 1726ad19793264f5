// What the cards of a setting are doing, in words that compare.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/interleaving/message.h"

namespace interleaving {

// For each stream: whether its channel is started, armed and held, at which rate and gains, and with
// `buffers` how many it has. Nothing that depends on when it is asked, and nothing of ports that nobody has
// open.
std::string DescribeCards(const Setting& setting, bool buffers);

bool IsClaimed(const StreamPlan& plan);
bool IsAcquired(const StreamPlan& plan);
uint64_t FramesMoved(const StreamPlan& plan);
unsigned OwnGain(const StreamPlan& plan);     // of an output, into its own connector
uint64_t FirstFrame(const StreamPlan& plan);  // on the group's clock

}  // namespace interleaving
