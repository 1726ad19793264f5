#include "tools/streams/capture_file.h"

#include "report/wave_format.h"

namespace kestvox {

static_assert(sizeof(simulator::Frame) == 8);

void CaptureFile::Begin(Scene& scene, unsigned device, uint32_t rate) {
    writer_.emplace(file_, ConnectorFormat(rate).Format);
    if (device / 2 >= scene.CardCount()) {
        return;  // opening the device will tell
    }
    const simulator::Port port = device % 2 ? simulator::Port::Digital : simulator::Port::Analog;
    scene.Cards().SendHeard(device / 2, port, [this](std::span<const simulator::Frame> frames) {
        const std::lock_guard guard(mutex_);
        waiting_.insert(waiting_.end(), frames.begin(), frames.end());
    });
}

void CaptureFile::Advance() {
    {
        const std::lock_guard guard(mutex_);
        taken_.swap(waiting_);
    }
    writer_->Write({reinterpret_cast<const char*>(taken_.data()), taken_.size() * sizeof taken_[0]});
    taken_.clear();
}

std::string CaptureFile::Problem() const {
    return writer_ ? writer_->Problem() : file_.Problem();
}

void CaptureFile::Finish() {
    Advance();
    writer_->Finish();
}

}  // namespace kestvox
