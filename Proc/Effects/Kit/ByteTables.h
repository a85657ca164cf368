#pragma once

#include "Proc/Effects/Kit/Targets.h"
#include "Proc/Interfaces/Plane.h"

#include <array>
#include <span>
#include <vector>

namespace Velnor::Proc::Kernels {

/// What each of the 256 values of a byte becomes.
using Table = std::array<unsigned char, 256>;

/// Maps the bytes of a plane through tables: byte k of every whole pixel of a row becomes tables[k][byte k]. Bytes of a
/// pixel that have no table are copied. Bytes at the end of a row that make no whole pixel, and bytes between two rows,
/// are never written. Rows may have any width, stride sign and alignment.
/// @param source      read
/// @param target      written; the same plane (then the work is done in place) or one that shares no byte with `source`
/// @param tables      1 to `pixelBytes` tables
/// @param pixelBytes  bytes of one pixel of both planes, 1 to 4
/// Throws ProcException, before a byte is written, when the planes differ in size or a count is outside its range.
void MapBytes(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
              unsigned int pixelBytes);

/// The meaning of MapBytes in one plain loop: every other way gives the same bytes. Checks nothing.
void MapBytesScalar(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
                    unsigned int pixelBytes);

/// The targets that MapBytes has code for and may use, slowest first; it takes the last.
std::vector<Target> SupportedTargets();

/// MapBytes by the code for one target, which must be among SupportedTargets().
void MapBytesWith(Target instructionSet, ConstPlane const& source, MutablePlane const& target,
                  std::span<Table const> tables, unsigned int pixelBytes);

} // namespace Velnor::Proc::Kernels
