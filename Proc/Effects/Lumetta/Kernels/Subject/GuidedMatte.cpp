#include "Proc/Effects/Lumetta/Kernels/Subject/GuidedMatte.h"

#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"

#include <algorithm>
#include <array>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

constexpr float EPSILON = 2e-4F; ///< Variance of colour, of 0 to 1, that counts as none.

/// Alpha as a linear function of the colour, by place; `mean` is the cut's own mean there.
struct Models {
    std::array<FloatPlane, 3> factors;
    FloatPlane offset, mean;
};

FloatPlane Product(FloatPlane const& first, FloatPlane const& second) {
    FloatPlane result(first.width, first.height);
    std::ranges::transform(first.values, second.values, result.values.begin(), std::multiplies<>());
    return result;
}

/// Solves the symmetric system [0 1 2; 1 3 4; 2 4 5] x = right, which is positive definite.
std::array<float, 3> Solve(std::array<float, 6> const& m, std::array<float, 3> const& right) {
    float const c0 = m[3] * m[5] - m[4] * m[4];
    float const c1 = m[2] * m[4] - m[1] * m[5];
    float const c2 = m[1] * m[4] - m[2] * m[3];
    float const determinant = m[0] * c0 + m[1] * c1 + m[2] * c2;
    float const c3 = m[0] * m[5] - m[2] * m[2];
    float const c4 = m[1] * m[2] - m[0] * m[4];
    float const c5 = m[0] * m[3] - m[1] * m[1];
    return {(c0 * right[0] + c1 * right[1] + c2 * right[2]) / determinant,
            (c1 * right[0] + c3 * right[1] + c4 * right[2]) / determinant,
            (c2 * right[0] + c4 * right[1] + c5 * right[2]) / determinant};
}

Models Fit(ConstPlane const& rgb, ConstPlane const& cut, unsigned char subject, std::size_t radius) {
    std::size_t const width = cut.GetWidth();
    std::size_t const height = cut.GetHeight();
    FloatPlane const none(width, height);
    FloatPlane scratch = none;
    Models models{{none, none, none}, none, none};
    std::array<FloatPlane, 3>& colour = models.factors;
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            for (std::size_t k = 0; k < 3; ++k)
                colour[k].GetRow(y)[x] = static_cast<float>(rgb.GetRow(y)[3 * x + k]) / 255.0F;
            models.mean.GetRow(y)[x] = cut.GetRow(y)[x] == subject ? 1.0F : 0.0F;
        }
    auto const mean = [&](FloatPlane plane) {
        BoxMean(plane, radius, scratch);
        return plane;
    };
    std::vector<FloatPlane> squares, joint;
    for (std::size_t k = 0; k < 3; ++k) {
        joint.push_back(mean(Product(colour[k], models.mean)));
        for (std::size_t j = k; j < 3; ++j) squares.push_back(mean(Product(colour[k], colour[j])));
    }
    for (FloatPlane& plane : colour) plane = mean(std::move(plane));
    models.mean = mean(std::move(models.mean));
    for (std::size_t i = 0; i < none.values.size(); ++i) {
        std::array<float, 3> const at{colour[0].values[i], colour[1].values[i], colour[2].values[i]};
        float const share = models.mean.values[i];
        std::array<float, 6> matrix{};
        std::array<float, 3> right{};
        for (std::size_t k = 0, entry = 0; k < 3; ++k) {
            right[k] = joint[k].values[i] - at[k] * share;
            for (std::size_t j = k; j < 3; ++j, ++entry)
                matrix[entry] = squares[entry].values[i] - at[k] * at[j] + (j == k ? EPSILON : 0.0F);
        }
        std::array<float, 3> const factors = Solve(matrix, right);
        float offset = share;
        for (std::size_t k = 0; k < 3; ++k) {
            offset -= factors[k] * at[k];
            colour[k].values[i] = factors[k];
        }
        models.offset.values[i] = offset;
    }
    for (FloatPlane& plane : colour) plane = mean(std::move(plane));
    models.offset = mean(std::move(models.offset));
    return models;
}

/// Where a pixel of the picture lies between two of the copy.
struct Between {
    Between(std::size_t at, std::size_t count, std::size_t smallCount) {
        float const place =
            (static_cast<float>(at) + 0.5F) * static_cast<float>(smallCount) / static_cast<float>(count);
        float const inside = std::clamp(place - 0.5F, 0.0F, static_cast<float>(smallCount - 1));
        low = static_cast<std::size_t>(inside);
        high = std::min(low + 1, smallCount - 1);
        share = inside - static_cast<float>(low);
    }
    std::size_t low, high;
    float share;
};

float Sample(FloatPlane const& plane, Between const& x, Between const& y) {
    float const* const upper = plane.GetRow(y.low);
    float const* const lower = plane.GetRow(y.high);
    float const above = upper[x.low] + x.share * (upper[x.high] - upper[x.low]);
    float const below = lower[x.low] + x.share * (lower[x.high] - lower[x.low]);
    return above + y.share * (below - above);
}

} // namespace

void MakeMatte(ConstPlane const& smallRgb, ConstPlane const& cut, unsigned char subject, std::size_t radius,
               ConstPlane const& rgba, MutablePlane const& mask) {
    constexpr float LEAST = 0.02F; // Of subject around: below, and above the rest to 1, there is no edge near.
    constexpr float CLEAN = 0.12F; // What a background of the same colour as some hair would keep.
    Models const models = Fit(smallRgb, cut, subject, radius);
    std::vector<Between> columns;
    for (std::size_t x = 0; x < mask.GetWidth(); ++x) columns.emplace_back(x, mask.GetWidth(), cut.GetWidth());
    for (std::size_t y = 0; y < mask.GetHeight(); ++y) {
        Between const row(y, mask.GetHeight(), cut.GetHeight());
        unsigned char const* pixel = rgba.GetRow(y);
        for (std::size_t x = 0; x < mask.GetWidth(); ++x, pixel += 4) {
            float alpha = Sample(models.mean, columns[x], row);
            if (radius > 0 && alpha > LEAST && alpha < 1 - LEAST) {
                alpha = Sample(models.offset, columns[x], row);
                for (std::size_t k = 0; k < 3; ++k)
                    alpha += Sample(models.factors[k], columns[x], row) * static_cast<float>(pixel[k]) / 255.0F;
                alpha = (alpha - CLEAN) / (1 - 2 * CLEAN);
            } else if (radius > 0) {
                alpha = alpha > 0.5F ? 1.0F : 0.0F;
            }
            mask.GetRow(y)[x] = static_cast<unsigned char>(255 * std::clamp(alpha, 0.0F, 1.0F) + 0.5F);
        }
    }
}

} // namespace Velnor::Proc::Kernels
