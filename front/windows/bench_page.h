// The page about a run on the bench.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "front/host.h"
#include "report/run_page.h"

namespace front {

// Not more than one thread at a time calls it, but for Take.
class BenchPage {
public:
    // The cards have been put up, and outlive this. Whether the file can be written is known at once.
    BenchPage(simulator::Simulator& cards, const std::wstring& path);
    bool CanBeWritten() const { return file_.good(); }

    void Take(const simulator::TraceEntry& entry) { page_.Take(entry); }

    // The stream of that name is open, and has not started.
    void Opened(WaveDirection direction, UINT device, const std::string& name, const WAVEFORMATEX& format);
    void Header(host::HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header);
    void Reset(WaveDirection direction, UINT device);
    // The stream has been closed; what the cards say of it is still to be had.
    void Closed(WaveDirection direction, UINT device);

    // Writes the page. False when not everything is in the file. Nothing may follow.
    bool Finish();

private:
    struct Stream {
        std::string Name;
        kestvox::StreamWatch* Watch;  // null: there are too many for a picture of each
    };
    using Key = std::pair<WaveDirection, UINT>;

    // Null: the stream is not open, or has no picture.
    kestvox::StreamWatch* WatchOf(WaveDirection direction, UINT device);
    void Queued(kestvox::StreamWatch& watch, const WAVEHDR& header);
    void AddFacts(const Stream& stream, WaveDirection direction, UINT device);
    void AddDifferences(const Stream& stream);

    simulator::Simulator& cards_;
    std::ofstream file_;
    kestvox::RunPage page_;
    kestvox::Report report_;
    kestvox::RunOutcome outcome_;
    std::map<Key, Stream> open_;
    unsigned withoutPicture_ = 0;
};

}  // namespace front
