// A page about a run, for a browser: one file that needs no other and no network.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/files/output_file.h"
#include "tools/machine/scene.h"
#include "tools/page/card_watch.h"
#include "tools/page/request_table.h"
#include "tools/page/stream_watch.h"
#include "tools/streams/side_work.h"

namespace kestvox {

// How a run came out, as the page says it in words.
struct RunWords {
    std::string Command;
    std::string Problem;              // what ended the run before its time, or empty
    std::vector<std::string> Losses;  // one line each
    int Status;                       // the exit status
    std::string Json;                 // the whole report as one JSON object
};

// What it keeps does not grow with the length of the run. It outlives the scene.
class RunPage final : public SideWork {
public:
    // CommandError when the file cannot be made.
    explicit RunPage(const std::string& path) : file_(path) {}

    // Before the driver has come. CommandError when the cards are not simulated.
    void Begin(Scene& scene);
    // The next request to the cards, on any thread, one at a time.
    void Take(const simulator::TraceEntry& entry) { requests_.Take(entry); }
    // A stream that is open and not started; the arguments are those of StreamWatch.
    template <typename Stream, typename... More>
    void Watch(Stream& stream, More&&... more) {
        streams_.push_back(std::make_unique<StreamWatch>(stream, *scene_, std::forward<More>(more)...));
    }

    void Advance() override;
    std::string Problem() const override { return file_.Problem(); }

    // The streams are closed, and the scene is still there.
    void End();
    // Writes the page.
    void Finish(const RunWords& words);

private:
    std::string WatchedJson() const;

    OutputFile file_;
    Scene* scene_ = nullptr;
    std::optional<CardWatch> cards_;
    std::vector<std::unique_ptr<StreamWatch>> streams_;
    RequestTable requests_;
};

}  // namespace kestvox
