#pragma once

#include "Proc/Effects/Kit/ByteTables.h"

namespace Velnor::Proc::Kernels {

/// The table that moves component value `c` to `grey` and bends the rest of the range with it: a straight line from
/// (0, 0) to (c, grey), and one from there to (255, 255). Where the table would jump by 5 or more just above c, it
/// rises by 2 a step there instead, and ends below 255: highlights are then not driven to full white.
/// @param c     component of the reference colour, 0 to 255
/// @param grey  grey level of the reference colour, 0 to 255; a third or more of c, as a mean of three components is
/// All divisions truncate. No entry needs clamping for the pairs that a colour can have.
Table BalanceTable(int c, int grey);

} // namespace Velnor::Proc::Kernels
