#include "simulator/connectors/mixer.h"

#include <algorithm>
#include <limits>

namespace simulator {
namespace {

constexpr uint8_t Unity = 128;

int32_t Saturate(int64_t sum) {
    return static_cast<int32_t>(std::clamp<int64_t>(sum / Unity, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

struct Term {
    const Frame* Frames;
    int64_t Gain;
};

}  // namespace

void MixFrames(const std::array<const Frame*, MixerSources>& sources,
               const std::array<uint8_t, MixerSources>& gains, size_t count, Frame* out) {
    std::array<Term, MixerSources> terms{};
    size_t used = 0;
    for (unsigned source = 0; source < MixerSources; ++source) {
        if (sources[source] && gains[source] != 0) {
            terms[used++] = {sources[source], gains[source]};
        }
    }
    if (used == 0) {
        std::fill_n(out, count, Frame{});
        return;
    }
    if (used == 1 && terms[0].Gain == Unity) {
        std::copy_n(terms[0].Frames, count, out);
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        int64_t left = 0;
        int64_t right = 0;
        for (size_t term = 0; term < used; ++term) {
            left += terms[term].Frames[i].Left * terms[term].Gain;
            right += terms[term].Frames[i].Right * terms[term].Gain;
        }
        out[i] = {Saturate(left), Saturate(right)};
    }
}

}  // namespace simulator
