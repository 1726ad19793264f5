// Every request to the cards, on its way into a file for a timeline viewer.
#pragma once

#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "simulator/trace/trace.h"
#include "tools/files/output_file.h"
#include "tools/machine/scene.h"
#include "tools/streams/side_work.h"

namespace kestvox {

class TraceFile final : public SideWork {
public:
    // CommandError when the file cannot be made.
    explicit TraceFile(const std::string& path) : file_(path), trace_(text_) {}

    // From now on, until Finish; this outlives the scene. CommandError when the cards are not simulated.
    void Begin(Scene& scene);

    void Advance() override;
    std::string Problem() const override { return file_.Problem(); }

    // Also when not all could be written: the file then ends after the last request that was.
    void Finish(Scene& scene);

private:
    void WriteText();
    void CutAfterLastEvent();

    OutputFile file_;
    std::ostringstream text_;
    simulator::ChromeTrace trace_;
    std::mutex mutex_;
    std::vector<simulator::TraceEntry> waiting_;
    std::vector<simulator::TraceEntry> taken_;
};

}  // namespace kestvox
