#include "simulator/requests/request_hold.h"

namespace simulator {
namespace {

thread_local RequestHold* watching = nullptr;

std::atomic<unsigned> holds = 0;       // under way
std::atomic<unsigned> holdsSoFar = 0;  // that ever began

void BeginHold() {
    ++holdsSoFar;
    ++holds;
}

}  // namespace

RequestHold::Watch::Watch(RequestHold& hold) : hold_(hold), outer_(watching) {
    watching = &hold;
}

RequestHold::Watch::~Watch() {
    watching = outer_;
    const std::lock_guard guard(hold_.lock_);
    hold_.state_ = State::Ended;
    hold_.changed_.notify_all();
}

RequestHold::Elsewhere::Elsewhere() {
    BeginHold();
}

RequestHold::Elsewhere::~Elsewhere() {
    --holds;
}

RequestHold::State RequestHold::AwaitHeldOrEnded() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return state_ != State::Running; });
    return state_;
}

void RequestHold::LetGo() {
    const std::lock_guard guard(lock_);
    letGo_ = true;
    state_ = state_ == State::Held ? State::Running : state_;
    changed_.notify_all();
}

unsigned RequestHold::Requests() {
    const std::lock_guard guard(lock_);
    return requests_;
}

void RequestHold::Reach(Where where) {
    if (watching != nullptr) {
        watching->Meet(where);
    }
}

unsigned RequestHold::UnderWay() {
    return holds != 0 ? holdsSoFar.load() : 0;
}

void RequestHold::Meet(Where where) {
    std::unique_lock guard(lock_);
    requests_ += where == Where::Before ? 1 : 0;
    if (where != where_ || requests_ != nth_ || letGo_) {
        return;
    }
    BeginHold();
    state_ = State::Held;
    changed_.notify_all();
    changed_.wait(guard, [this] { return letGo_; });
    --holds;
}

}  // namespace simulator
