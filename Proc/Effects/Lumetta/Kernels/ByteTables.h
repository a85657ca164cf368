#pragma once
#include "Proc/Interfaces/Plane.h"
#include <array>
#include <span>
namespace Velnor::Proc::Kernels {
using Table = std::array<unsigned char, 256>;
void MapBytes(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables, unsigned int pixelBytes);
}
