#pragma once

#include "Proc/Interfaces/Face.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace Velnor::Proc::Kernels {

inline Face::Point operator+(Face::Point a, Face::Point b) { return {a.x + b.x, a.y + b.y}; }
inline Face::Point operator-(Face::Point a, Face::Point b) { return {a.x - b.x, a.y - b.y}; }
inline Face::Point operator*(Face::Point a, float factor) { return {a.x * factor, a.y * factor}; }
inline float Dot(Face::Point a, Face::Point b) { return a.x * b.x + a.y * b.y; }
inline float Length(Face::Point a) { return std::sqrt(Dot(a, a)); }

/// The mean of a part's landmarks: of an eye, the middle of its opening.
inline Face::Point Middle(Face const& face, Face::Part const& part) {
    Face::Point sum;
    for (Face::Point const& point : face.Get(part)) sum = sum + point;
    return sum * (1 / static_cast<float>(part.count));
}

/// A smooth bump on a circle: 1 in its middle, 0 with no slope at its rim and beyond.
struct Bump {
    Face::Point centre;
    float radius = 0; ///< Pixels; nothing is inside of a circle of 0.

    float At(Face::Point place) const {
        Face::Point const from = place - centre;
        float const square = Dot(from, from);
        if (!(square < radius * radius)) return 0;
        float const inside = 1 - square / (radius * radius);
        return inside * inside;
    }
};

/// The smallest box around circles, to pass by in a hurry the pixels that are in none.
class Bounds {
public:
    void Add(Bump const& bump) {
        left = std::min(left, bump.centre.x - bump.radius);
        top = std::min(top, bump.centre.y - bump.radius);
        right = std::max(right, bump.centre.x + bump.radius);
        bottom = std::max(bottom, bump.centre.y + bump.radius);
    }
    bool Has(Face::Point place) const { return place.x > left && place.x < right && place.y > top && place.y < bottom; }

private:
    float left = 1e30F, top = 1e30F, right = -1e30F, bottom = -1e30F;
};

/// Enlarges the eyes of faces: where an output pixel reads.
///
///     place(p) = p - strength * bump(p) * (p - centre)
///
/// The bump is round, so an iris stays round, and all but flat over an iris in the middle, so it grows evenly. It ends
/// where the two eyes meet at the latest, and spans the lids, which move along with what they lie on.
class EyeMap {
public:
    /// @param shrink  0 to 0.5: what is read in the middle of an eye spans 1 - shrink of what is shown
    EyeMap(std::vector<Face> const& faces, float shrink) : amount(shrink) {
        for (Face const& face : faces) {
            Face::Point const apart = Middle(face, Face::RIGHT_EYE) - Middle(face, Face::LEFT_EYE);
            for (Face::Part const& eye : {Face::LEFT_EYE, Face::RIGHT_EYE}) {
                float const width = Length(face.Get(eye)[3] - face.Get(eye)[0]);
                bumps.push_back({Middle(face, eye), std::min(width, Length(apart) / 2)});
                bounds.Add(bumps.back());
            }
        }
    }

    std::pair<float, float> operator()(int x, int y) const {
        Face::Point const place{static_cast<float>(x), static_cast<float>(y)};
        if (!bounds.Has(place)) return {place.x, place.y};
        Face::Point from = place;
        for (Bump const& bump : bumps) from = from - (place - bump.centre) * (amount * bump.At(place));
        return {from.x, from.y};
    }

private:
    std::vector<Bump> bumps;
    Bounds bounds;
    float amount;
};

/// Slims faces along the jaw: where an output pixel reads. Each landmark between ear and chin pushes what is around it
/// towards the line from the bridge of the nose to the chin:
///
///     place(p) = p + push * sum(bump_i(p) * outward_i) / (1 + sum(bump_i(p)))
///
/// The bumps are centred inside of the jaw, so that the push is over soon in the background, and smaller towards ear
/// and chin, so that neither is dented.
class JawMap {
public:
    /// @param push  0 to 0.1: of a face's width, how far the jaw moves in at most on each side
    JawMap(std::vector<Face> const& faces, float push) {
        for (Face const& face : faces) Add(face, push);
    }

    std::pair<float, float> operator()(int x, int y) const {
        Face::Point from{static_cast<float>(x), static_cast<float>(y)};
        if (!bounds.Has(from)) return {from.x, from.y};
        Face::Point const place = from;
        for (std::vector<Push> const& jaw : jaws) {
            Face::Point sum;
            float weights = 1;
            for (Push const& push : jaw) {
                float const weight = push.bump.At(place);
                sum = sum + push.outward * weight;
                weights += weight;
            }
            from = from + sum * (1 / weights);
        }
        return {from.x, from.y};
    }

private:
    struct Push {
        Bump bump;
        Face::Point outward; ///< Pixels.
    };

    void Add(Face const& face, float push) {
        constexpr std::size_t LAST = 16, CHIN = 8;
        auto const jaw = face.Get(Face::JAW);
        float const width = Length(jaw[LAST] - jaw[0]);
        Face::Point const down = jaw[CHIN] - face.Get(Face::NOSE)[0];
        float const length = Length(down);
        if (width <= 0 || length <= 0) return;
        Face::Point const right{down.y / length, -down.x / length};
        std::vector<Push> pushes;
        for (std::size_t i = 2; i <= LAST - 2; ++i) {
            if (i == CHIN) continue;
            // 1 in the middle of each half of the jaw, less towards its ends.
            float const along = static_cast<float>(i < CHIN ? i : LAST - i) / CHIN;
            float const share = 4 * along * (1 - along);
            float const side = i < CHIN ? -1.0F : 1.0F;
            float const radius = 0.36F * width;
            Face::Point const centre = jaw[i] - right * (side * 0.35F * radius);
            pushes.push_back({{centre, radius}, right * (side * share * push * width)});
            bounds.Add(pushes.back().bump);
        }
        jaws.push_back(std::move(pushes));
    }

    std::vector<std::vector<Push>> jaws;
    Bounds bounds;
};

} // namespace Velnor::Proc::Kernels
