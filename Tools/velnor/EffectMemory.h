#pragma once

#include <cstdint>
#include <string>

namespace Velnor::Tool {

/// Bytes that a run of an effect holds at its height for each pixel of the photograph, with its usual parameters and
/// the picture included; a cautious guess for an effect that is not in the table. Scripts/measure-memory makes the
/// table.
std::uint64_t GetEffectMemory(std::string const& effect, std::string const& implementation);

/// The same of writing, whatever the kind of file.
inline constexpr std::uint64_t WRITING_MEMORY = 12;

} // namespace Velnor::Tool
