#include "Proc/Interfaces/IEffect.h"

#include <algorithm>

namespace Velnor::Proc {

double TimeToProgress::GetFraction(std::int64_t microseconds) const {
    if (end <= begin) return 1.0;
    return std::clamp(static_cast<double>(microseconds - begin) / static_cast<double>(end - begin), 0.0, 1.0);
}

} // namespace Velnor::Proc
