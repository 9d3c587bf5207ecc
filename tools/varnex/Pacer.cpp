#include "Pacer.h"

namespace VarnexTool {

bool Pacer::wait() {
    using namespace std::chrono;
    if (rate_ <= 0) return !stop_.isStopped();
    const duration<double> due(static_cast<double>(turns_++) / rate_);
    return stop_.sleepUntil(start_ + duration_cast<steady_clock::duration>(due));
}

}  // namespace VarnexTool
