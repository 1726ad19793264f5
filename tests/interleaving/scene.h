// The streams of a setting: made ready for the messages, looked at after them, and then put to the proof.
#pragma once

#include <string>
#include <vector>

#include "tests/interleaving/message.h"
#include "tests/interleaving/side.h"

namespace interleaving {

class Scene {
public:
    static constexpr int64_t Millisecond = 1000;

    // One side for each program of the setting.
    Scene(const Setting& setting, std::vector<Line> sides) : setting_(setting), sides_(std::move(sides)) {}

    void Join();
    bool Leave();  // nothing was left behind

    void Prepare(Start from);
    Line& SideOf(unsigned program) { return sides_[program]; }
    // Whether a thread of that program is held, for the others to know.
    void TellOthers(unsigned program, bool held);
    void Advance(int64_t microseconds);

    // What came of the acts, in words that compare. What must be so whatever went before is tried then.
    std::string Outcome(Start from, const std::vector<Act>& acts);
    // What was found wrong in the preparation and since.
    std::vector<std::string> TakeFaults() { return std::exchange(faults_, {}); }

private:
    void PrepareStream(unsigned stream, Start from);
    std::string Snapshot(bool buffers);
    std::string WakeUp(Start from, bool softReset, bool buffers);
    void ExpectUndisturbed(Start from, const std::vector<Act>& acts);
    void ExpectStart(bool afresh);  // of all that are open; afresh, after a reset, on one frame
    void ExpectAllBack();
    void ExpectNoneAway(unsigned stream, const std::string& over);  // headers
    void ExpectEnd();
    void ExpectAnotherRate();

    void Expect(bool good, const std::string& fault) {
        if (!good) {
            faults_.push_back(fault);
        }
    }
    void Expect(bool good, unsigned stream, const std::string& fault) {
        Expect(good, "stream " + std::to_string(stream) + " " + fault);
    }
    std::vector<uint64_t> MovedIn(int64_t microseconds);
    unsigned StreamCount() const { return static_cast<unsigned>(setting_.Streams.size()); }
    Line& OwnerOf(unsigned stream) { return sides_[setting_.Streams[stream].Program]; }
    bool IsOpen(unsigned stream) { return OwnerOf(stream).Do<&Side::IsOpen>(stream) != 0; }
    int64_t Send(Message message, unsigned stream) {
        return OwnerOf(stream).Do<&Side::Send>(message, stream);
    }
    void Hand(unsigned stream, DWORD length = Stream::LongHeader, DWORD flags = 0, DWORD loops = 0) {
        OwnerOf(stream).Do<&Side::Hand>(stream, length, flags, loops);
    }

    const Setting setting_;
    std::vector<Line> sides_;
    std::vector<std::string> faults_;
};

}  // namespace interleaving
