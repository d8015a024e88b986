#include "fault.h"

#include <sys/mman.h>

#include <new>

namespace faults {

Run& run() {
    static Run* const shared = [] {
        void* memory =
            mmap(nullptr, sizeof(Run), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        return new (memory) Run;
    }();
    return *shared;
}

bool strikes(Step step) {
    Run& current = run();
    if (!current.armed || current.fault.step != step) {
        return false;
    }
    ++current.count;
    const Fault& fault = current.fault;
    if (current.count < fault.first || current.count - fault.first >= fault.times) {
        return false;
    }
    ++current.struck;
    current.struckInActions += current.actionsLength > 0 ? 1 : 0;
    return true;
}

}  // namespace faults
