// The library's conversions beside the same work by other libraries, in one run. Where the work is the same
// to the byte the results are compared, and a benchmark's label says how many bytes differ; dither is random.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <memory>

#include "bench/peers/peer.h"
#include "convert/routines.h"

namespace {

using namespace kestvox;

struct WorkKind {
    const char* Name;
    size_t SourceSize;  // bytes of a sample
    size_t ResultSize;
    bool Exact;  // every library should write the same
    void (*Ours)(uint8_t* to, const uint8_t* from);
};

void OurExpand24(uint8_t* to, const uint8_t* from) {
    ExpandPacked24(reinterpret_cast<uint32_t*>(to), from, PeerSamples);
}

void OurPack24(uint8_t* to, const uint8_t* from) {
    PackCapture24(to, reinterpret_cast<const uint32_t*>(from), PeerSamples);
}

void OurExpandALaw(uint8_t* to, const uint8_t* from) {
    ExpandCompanded(reinterpret_cast<int16_t*>(to), from, ALawTable, PeerSamples);
}

void OurDither16(uint8_t* to, const uint8_t* from) {
    static DitherState state = {};
    DitherCapture16(reinterpret_cast<int16_t*>(to), reinterpret_cast<const int32_t*>(from), PeerSamples,
                    DitherTriangular, 2, state);
}

// By Work.
constexpr std::array Kinds = {
    WorkKind{"expand24", 3, 4, true, OurExpand24},
    WorkKind{"pack24", 4, 3, true, OurPack24},
    WorkKind{"expand_alaw", 1, 2, true, OurExpandALaw},
    WorkKind{"dither16", 4, 2, false, OurDither16},
};

// Noise at an eighth of full scale, the lowest byte of a slot zero.
std::vector<uint8_t> MakeSource(const WorkKind& kind) {
    std::vector<uint8_t> source(PeerSamples * kind.SourceSize);
    uint32_t noise = 1;
    for (size_t i = 0; i < source.size(); ++i) {
        noise = noise * 1664525 + 1013904223;
        const size_t place = i % kind.SourceSize;
        source[i] = static_cast<uint8_t>(noise >> 24);
        if (kind.SourceSize > 1 && place == kind.SourceSize - 1) {
            source[i] = static_cast<uint8_t>(static_cast<int8_t>(source[i]) / 8);
        } else if (kind.SourceSize == 4 && place == 0) {
            source[i] = 0;
        }
    }
    return source;
}

void Run(benchmark::State& state, const Peer& peer) {
    const WorkKind& kind = Kinds[static_cast<size_t>(peer.Does)];
    const std::vector<uint8_t> source = MakeSource(kind);
    std::vector<uint8_t> result(PeerSamples * kind.ResultSize);
    for (auto _ : state) {
        peer.Convert(result.data(), source.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(PeerSamples));
    if (kind.Exact) {
        std::vector<uint8_t> ours(result.size());
        kind.Ours(ours.data(), source.data());
        size_t differing = 0;
        for (size_t i = 0; i < ours.size(); ++i) {
            differing += ours[i] != result[i];
        }
        state.SetLabel(differing == 0 ? "same bytes" : std::to_string(differing) + " bytes differ");
    }
}

}  // namespace

int main(int argc, char** argv) {
    PeerList peers;
    for (size_t i = 0; i < Kinds.size(); ++i) {
        peers.push_back({"kestvox", static_cast<Work>(i), Kinds[i].Ours});
    }
#ifdef PEER_AVCODEC
    AddAvCodec(peers);
#endif
#ifdef PEER_SNDFILE
    AddSndFile(peers);
#endif
#ifdef PEER_SOX
    AddSox(peers);
#endif
#ifdef PEER_GSTREAMER
    AddGStreamer(peers);
#endif
    std::ranges::stable_sort(peers, {}, &Peer::Does);
    for (const Peer& peer : peers) {
        const std::string name = std::string(Kinds[static_cast<size_t>(peer.Does)].Name) + "/" + peer.Library;
        benchmark::RegisterBenchmark(name.c_str(), [peer](benchmark::State& state) { Run(state, peer); });
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
