#include "Tools/velnor/EffectMemory.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Velnor::Tool {
namespace {

struct Record {
    std::string_view effect;
    std::string_view implementation;
    std::uint64_t bytes;
};

constexpr Record RECORDS[] = {
#include "Tools/velnor/EffectMemory.inc"
};

/// As much as all but a few of those that were measured.
constexpr std::uint64_t USUAL = 40;

} // namespace

std::uint64_t GetEffectMemory(std::string const& effect, std::string const& implementation) {
    auto const found = std::ranges::find_if(RECORDS, [&](Record const& record) {
        return record.effect == effect && record.implementation == implementation;
    });
    return found == std::end(RECORDS) ? USUAL : found->bytes;
}

} // namespace Velnor::Tool
