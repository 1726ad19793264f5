#include "front/device_formats.h"

#include <algorithm>
#include <utility>

#include "front/host.h"

namespace front {

namespace {

constexpr DWORD UsualRates[] = {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000};
constexpr WORD UsualBits = 16;
constexpr WORD MostBits = 24;

// The lower, the better.
std::pair<int, DWORD> Distance(DWORD rate, DWORD wanted) {
    if (rate % wanted == 0) {
        return {0, rate};
    }
    return rate > wanted ? std::pair(1, rate) : std::pair(2, wanted - rate);
}

class TwoSteps : public Conversion {
public:
    TwoSteps(std::unique_ptr<Conversion> first, std::unique_ptr<Conversion> second)
        : first_(std::move(first)), second_(std::move(second)) {}

    DWORD Needed(DWORD size) const override { return first_->Needed(second_->Needed(size)); }

    size_t Convert(std::span<const BYTE> in, bool begins, std::vector<BYTE>& out) override {
        if (begins) {
            between_.clear();
        }
        const size_t used = first_->Convert(in, begins, between_);
        const size_t usedBetween = second_->Convert(between_, begins, out);
        between_.erase(between_.begin(), between_.begin() + static_cast<std::ptrdiff_t>(usedBetween));
        return used;
    }

private:
    std::unique_ptr<Conversion> first_;
    std::unique_ptr<Conversion> second_;
    std::vector<BYTE> between_;
};

}  // namespace

std::vector<WaveFormat> DeviceFormatsFor(const WaveFormat& client) {
    std::vector<DWORD> rates(std::begin(UsualRates), std::end(UsualRates));
    std::ranges::sort(rates, {}, [&](DWORD rate) { return Distance(rate, client->nSamplesPerSec); });
    const WORD channels = std::clamp<WORD>(client->nChannels, 1, 2);
    std::vector<WaveFormat> formats;
    for (const DWORD rate : rates) {
        if (client.IsPcm() && client->wBitsPerSample > UsualBits) {
            formats.push_back(WaveFormat::Pcm(rate, channels, MostBits));
        }
        formats.push_back(WaveFormat::Pcm(rate, channels, UsualBits));
    }
    return formats;
}

std::unique_ptr<Conversion> FindConversion(WaveDirection direction, const WaveFormat& client,
                                           const WaveFormat& device) {
    const bool playing = direction == WaveDirection::Out;
    const WaveFormat& from = playing ? client : device;
    const WaveFormat& to = playing ? device : client;
    if (std::unique_ptr<Conversion> conversion = host::OpenConversion(from.Get(), to.Get())) {
        return conversion;
    }
    const WaveFormat between = WaveFormat::Pcm(client->nSamplesPerSec, device->nChannels, UsualBits);
    std::unique_ptr<Conversion> first = host::OpenConversion(from.Get(), between.Get());
    std::unique_ptr<Conversion> second = first ? host::OpenConversion(between.Get(), to.Get()) : nullptr;
    return second ? std::make_unique<TwoSteps>(std::move(first), std::move(second)) : nullptr;
}

}  // namespace front
