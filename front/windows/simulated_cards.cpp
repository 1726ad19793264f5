#include "front/windows/simulated_cards.h"

#include <windows.h>

#include <utility>

#include "front/windows/bench.h"
#include "front/windows/text.h"
#include "simulator/attach.h"

namespace front {

namespace {

// A program's end is the end of its cards: they are not taken away from a destructor, when threads have been
// stopped anywhere.
Bench* bench = nullptr;

}  // namespace

bool PutUpCards() {
    if (simulator::HasSimulator()) {
        return true;
    }
    Environment environment;
    std::string why;
    if (ReadEnvironment(&environment, &why)) {
        bench = Bench::PutUp(std::move(environment), &why).release();
    }
    if (!bench) {
        TellDebugger(why);
    }
    return bench != nullptr;
}

void TakeAwayCards() {
    if (bench) {
        bench->Finish();
    }
    delete std::exchange(bench, nullptr);
}

Bench* TheBench() {
    return bench;
}

}  // namespace front

// What is kept of the run is written while the simulator is still there. At the end of the process `reserved`
// is not null, and the other threads are gone.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_DETACH && reserved && front::TheBench()) {
        front::TheBench()->Finish();
    }
    return TRUE;
}
