// Ends the program when an interleaving does not come to its end: what hangs in the driver cannot be undone.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace interleaving {

class Deadline {
public:
    Deadline();
    ~Deadline();
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    // From now on; printed when the time is over.
    void Begin(const std::string& recipe);
    // Where it is now, printed with it.
    void Reach(const char* step);
    void End();

private:
    void Run();

    std::mutex lock_;
    std::condition_variable changed_;
    std::string recipe_;
    const char* step_ = "";
    unsigned round_ = 0;  // odd while one is under way
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace interleaving
