#pragma once

#include <type_traits>

namespace Velnor::Proc {

/// Shares of the components in luma (Rec. ITU-R BT.601): each the nearest number of the type; thousandths for integers.
template <class Number>
struct LumaShare {
    static constexpr Number WHOLE = std::is_integral_v<Number> ? 1 : 1000;
    static constexpr Number RED = 299 / WHOLE;
    static constexpr Number GREEN = 587 / WHOLE;
    static constexpr Number BLUE = 114 / WHOLE;
};

} // namespace Velnor::Proc
