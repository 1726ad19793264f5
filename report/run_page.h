// A page about a run, for a browser: one file that needs no other and no network.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "report/card_watch.h"
#include "report/report.h"
#include "report/request_table.h"
#include "report/stream_watch.h"

namespace kestvox {

// What it keeps does not grow with the length of the run. Not more than one thread at a time calls it, but
// for Take.
class RunPage {
public:
    // Before the driver has come. `cards` outlive this.
    explicit RunPage(simulator::Simulator& cards) : simulator_(cards), cards_(cards) {}

    // The next request to the cards, on any thread, one at a time.
    void Take(const simulator::TraceEntry& entry) { requests_.Take(entry); }
    // A stream is open and has not started. The answer stays where it is.
    StreamWatch& Watch(const WatchedStream& stream);
    size_t StreamCount() const { return streams_.size(); }

    // Looks at streams and cards.
    void Advance();

    // The streams are closed, and the cards are still there.
    void End();
    // After End. `title` follows the name of this system in the page's title.
    std::string Text(const std::string& title, const RunOutcome& outcome, const Report& report) const;

private:
    std::string WatchedJson() const;

    simulator::Simulator& simulator_;
    CardWatch cards_;
    std::vector<std::unique_ptr<StreamWatch>> streams_;
    RequestTable requests_;
};

}  // namespace kestvox
