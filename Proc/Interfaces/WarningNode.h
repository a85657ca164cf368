#pragma once

namespace Velnor::Proc {

/// The child of an effect's statistics by which it tells in words that its last result may not be what was wanted,
/// though nothing failed. Not there when there is nothing to tell.
inline constexpr char const* WARNING_NODE = "Warning";

} // namespace Velnor::Proc
