// What a digital output tells, beside its samples, to whoever is at the other end of the cable.
#pragma once

#include <optional>

namespace simulator {

struct CardState;

// As a recorder shows it. Of IEC 60958 channel status, professional or consumer.
struct ChannelStatus {
    bool Professional;
    bool NonAudio;
    bool CopyPermitted;  // consumer
    bool Emphasis;       // 50/15 microseconds
    unsigned Rate;       // Hz; 0: not told

    bool operator==(const ChannelStatus&) const = default;
};

// Nothing when the transmitter does not run, or sends one format with the status of the other.
std::optional<ChannelStatus> SentStatus(const CardState& card);

}  // namespace simulator
