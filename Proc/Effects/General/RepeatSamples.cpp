#include "Proc/Effects/General/RepeatSamples.h"

#include <array>
#include <cstring>
#include <vector>

namespace Velnor::Proc {
namespace {

/// Which of `from` samples stands at sample `at` of `to`.
std::uint64_t Nearest(std::uint64_t at, std::uint64_t from, std::uint64_t to) { return (2 * at + 1) * from / (2 * to); }

using RepeatRow = void (*)(unsigned char const*, unsigned char*, std::vector<std::uint32_t> const&);

template <std::size_t Bytes>
void RepeatInRow(unsigned char const* source, unsigned char* target, std::vector<std::uint32_t> const& places) {
    for (std::uint32_t const place : places) {
        std::memcpy(target, source + place, Bytes);
        target += Bytes;
    }
}

} // namespace

void RepeatSamples(ConstPlane const& source, MutablePlane const& target, std::uint64_t sampleBytes) {
    static constexpr std::array<RepeatRow, 4> ROWS{RepeatInRow<1>, RepeatInRow<2>, RepeatInRow<3>, RepeatInRow<4>};
    RepeatRow const repeatRow = ROWS[sampleBytes - 1];
    std::uint64_t const from = source.GetWidth() / sampleBytes;
    std::vector<std::uint32_t> places(target.GetWidth() / sampleBytes);
    for (std::size_t x = 0; x < places.size(); ++x)
        places[x] = static_cast<std::uint32_t>(Nearest(x, from, places.size()) * sampleBytes);

    std::uint64_t last = source.GetHeight();
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        std::uint64_t const row = Nearest(y, source.GetHeight(), target.GetHeight());
        if (row == last)
            std::memcpy(target.GetRow(y), target.GetRow(y - 1), target.GetWidth());
        else
            repeatRow(source.GetRow(row), target.GetRow(y), places);
        last = row;
    }
}

} // namespace Velnor::Proc
