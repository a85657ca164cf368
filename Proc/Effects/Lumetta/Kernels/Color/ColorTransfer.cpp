#include "Proc/Effects/Lumetta/Kernels/Color/ColorTransfer.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

Matrix3 Multiply(Matrix3 const& a, Matrix3 const& b) {
    Matrix3 product{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k) product[i][j] += a[i][k] * b[k][j];
    return product;
}

struct Eigen {
    Vector3 values{};
    Matrix3 vectors{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}; ///< Columns.
};

/// One rotation of Jacobi's method: makes element (p, q) of the symmetric matrix 0.
void Rotate(Matrix3& m, Matrix3& vectors, std::size_t p, std::size_t q) {
    if (m[p][q] == 0) return;
    double const theta = (m[q][q] - m[p][p]) / (2 * m[p][q]);
    double const t = std::copysign(1.0, theta) / (std::abs(theta) + std::sqrt(theta * theta + 1));
    double const c = 1 / std::sqrt(t * t + 1);
    double const s = t * c;
    Matrix3 turn{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    turn[p][p] = turn[q][q] = c;
    turn[p][q] = s;
    turn[q][p] = -s;
    Matrix3 back = turn;
    std::swap(back[p][q], back[q][p]);
    m = Multiply(back, Multiply(m, turn));
    vectors = Multiply(vectors, turn);
}

Eigen Decompose(Matrix3 m) {
    Eigen result;
    constexpr int SWEEPS = 12; // four give all digits of a matrix this small
    for (int sweep = 0; sweep < SWEEPS; ++sweep) {
        Rotate(m, result.vectors, 0, 1);
        Rotate(m, result.vectors, 0, 2);
        Rotate(m, result.vectors, 1, 2);
    }
    for (std::size_t i = 0; i < 3; ++i) result.values[i] = m[i][i];
    return result;
}

/// V diag(f(values)) V'.
template <class Function>
Matrix3 Compose(Eigen const& eigen, Function const& f) {
    Matrix3 result{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] += eigen.vectors[i][k] * f(eigen.values[k]) * eigen.vectors[j][k];
    return result;
}

constexpr double LEAST_VARIANCE = 1e-6; // a quarter of a level of lightness

double Root(double variance) { return std::sqrt(std::max(variance, LEAST_VARIANCE)); }

} // namespace

ColorSpread MeasureSpread(std::vector<WeightedColor> const& colors) {
    ColorSpread spread;
    double total = 0;
    for (WeightedColor const& color : colors) {
        Vector3 const v{color.lab.l, color.lab.a, color.lab.b};
        total += color.weight;
        for (std::size_t i = 0; i < 3; ++i) spread.mean[i] += color.weight * v[i];
    }
    if (total == 0) return spread;
    for (double& part : spread.mean) part /= total;
    for (WeightedColor const& color : colors) {
        Vector3 const v{color.lab.l - spread.mean[0], color.lab.a - spread.mean[1], color.lab.b - spread.mean[2]};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j) spread.covariance[i][j] += color.weight / total * v[i] * v[j];
    }
    return spread;
}

ColorTransfer::ColorTransfer(ColorSpread const& from, ColorSpread const& to) : source(from.mean), target(to.mean) {
    Eigen const own = Decompose(from.covariance);
    Matrix3 const root = Compose(own, Root);
    Matrix3 const inverse = Compose(own, [](double variance) { return 1 / Root(variance); });
    Eigen const middle = Decompose(Multiply(root, Multiply(to.covariance, root)));
    Matrix3 const middleRoot = Compose(middle, [](double value) { return std::sqrt(std::max(value, 0.0)); });
    Matrix3 const exact = Multiply(inverse, Multiply(middleRoot, inverse));
    map = Compose(Decompose(exact), [](double stretch) { return std::min(stretch, MOST_STRETCH); });
}

Lab ColorTransfer::operator()(Lab const& color) const {
    Vector3 const v{color.l - source[0], color.a - source[1], color.b - source[2]};
    Vector3 result = target;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) result[i] += map[i][j] * v[j];
    return {static_cast<float>(std::clamp(result[0], 0.0, 1.0)), static_cast<float>(result[1]),
            static_cast<float>(result[2])};
}

} // namespace Velnor::Proc::Kernels
