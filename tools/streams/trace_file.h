// Every request to the cards, and what became of headers, on the way into a file for a timeline viewer.
#pragma once

#include <mutex>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "simulator/trace/chrome_trace.h"
#include "simulator/trace/trace.h"
#include "tools/files/output_file.h"
#include "tools/streams/side_work.h"

namespace kestvox {

class TraceFile final : public SideWork {
public:
    // CommandError when the file cannot be made.
    explicit TraceFile(const std::string& path) : file_(path), trace_(text_) {}

    // What comes next, on any thread.
    void Take(const simulator::TraceEntry& entry) { Append(entry); }
    void Take(const simulator::HeaderEvent& event) { Append(event); }

    void Advance() override;
    std::string Problem() const override { return file_.Problem(); }

    // There is no more. Also when not all could be written: the file then ends after the last request that
    // was.
    void Finish();

private:
    using Event = std::variant<simulator::TraceEntry, simulator::HeaderEvent>;

    void Append(Event event);
    void WriteText();
    void CutAfterLastEvent();

    OutputFile file_;
    std::ostringstream text_;
    simulator::ChromeTrace trace_;
    std::mutex mutex_;
    std::vector<Event> waiting_;
    std::vector<Event> taken_;
};

}  // namespace kestvox
