#include "Proc/Effects/Lumetta/Kernels/Style/GlassSquares.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace Velnor::Proc::Kernels {
namespace {

constexpr int DIVISIONS = 2;
constexpr int LEAST_SIDE = 6;    ///< Of what is divided, pixels.
constexpr double CONTRAST = 110; ///< What a line through a square climbs or falls in all before it is quartered.
constexpr int TEXTURE = 2;       ///< Levels between neighbours that are no edge yet.

int LumaOf(unsigned char const* pixel) { return (pixel[0] + 2 * pixel[1] + pixel[2]) / 4; }

int EdgeStep(int difference) { return std::max(0, std::abs(difference) - TEXTURE); }

class Divider {
public:
    Divider(ConstPlane const& bytes, double awareness)
        : picture(bytes),
          width(static_cast<int>(bytes.GetWidth() / 3)),
          height(static_cast<int>(bytes.GetHeight())),
          contrast(awareness > 0 ? CONTRAST / awareness : 0) {}

    void Add(GlassSquare const& square, int divisions) {
        if (divisions == 0 || !IsDetailed(square)) {
            squares.push_back(square);
            return;
        }
        int const x = std::midpoint(square.left, square.right);
        int const y = std::midpoint(square.top, square.bottom);
        Add({square.left, square.top, x, y}, divisions - 1);
        Add({x, square.top, square.right, y}, divisions - 1);
        Add({square.left, y, x, square.bottom}, divisions - 1);
        Add({x, y, square.right, square.bottom}, divisions - 1);
    }

    std::vector<GlassSquare> squares;

private:
    /// Whether lines across and down the square change by as much as asks for smaller ones, in the mean.
    bool IsDetailed(GlassSquare const& square) const {
        int const columns = square.right - square.left;
        int const rows = square.bottom - square.top;
        if (contrast <= 0 || columns < LEAST_SIDE || rows < LEAST_SIDE) return false;
        std::int64_t across = 0;
        std::int64_t down = 0;
        for (int y = square.top; y < square.bottom; ++y) {
            unsigned char const* const row = picture.GetRow(static_cast<std::uint64_t>(y));
            unsigned char const* const next = picture.GetRow(static_cast<std::uint64_t>(std::min(y + 1, height - 1)));
            for (int x = square.left; x < square.right; ++x) {
                int const luma = LumaOf(row + std::ptrdiff_t{3} * x);
                across += EdgeStep(luma - LumaOf(row + std::ptrdiff_t{3} * std::min(x + 1, width - 1)));
                down += EdgeStep(luma - LumaOf(next + std::ptrdiff_t{3} * x));
            }
        }
        return static_cast<double>(across) / rows + static_cast<double>(down) / columns > contrast;
    }

    ConstPlane picture;
    int width, height;
    double contrast;
};

} // namespace

std::vector<GlassSquare> DivideByDetail(ConstPlane const& picture, double side, double awareness) {
    auto const width = static_cast<int>(picture.GetWidth() / 3);
    auto const height = static_cast<int>(picture.GetHeight());
    int const columns = std::max(1, static_cast<int>(width / side + 0.5));
    int const rows = std::max(1, static_cast<int>(height / side + 0.5));
    Divider divider(picture, awareness);
    auto const edge = [](int i, int count, int length) {
        return static_cast<int>((std::int64_t{i} * length + count - 1) / count);
    };
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            divider.Add({edge(column, columns, width), edge(row, rows, height), edge(column + 1, columns, width),
                         edge(row + 1, rows, height)},
                        DIVISIONS);
    return std::move(divider.squares);
}

} // namespace Velnor::Proc::Kernels
