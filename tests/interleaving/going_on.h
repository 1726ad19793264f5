// Which interleaving is under way, for when the program crashes or hangs: it is printed then.
#pragma once

#include <string>

namespace interleaving {

class GoingOn {
public:
    explicit GoingOn(const std::string& recipe);
    ~GoingOn();
    GoingOn(const GoingOn&) = delete;
    GoingOn& operator=(const GoingOn&) = delete;

    static void Reach(const char* step);  // where it is now
};

}  // namespace interleaving
