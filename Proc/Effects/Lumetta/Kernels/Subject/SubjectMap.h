#pragma once

#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectStrokes.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Velnor::Proc::Kernels {

/// How surely each part of a picture belongs to its subject, 0 (not at all) to 1, row after row, stretched over the
/// picture whatever its shape.
struct SubjectMap {
    std::span<float const> values; ///< width x height
    std::size_t width, height;

    /// Whether any part is more likely of the subject than not.
    bool HasSubject() const;

    /// What is neither surely of the subject nor surely not, in percent of what is more likely of it than not. A sharp
    /// outline alone takes 1 to 5; from DOUBTFUL on the map does not know a whole part.
    double GetDoubt() const;
    static constexpr double DOUBTFUL = 15;
};

/// Marks what the map is sure of; its soft outline, and what it does not know, is left to a cut. `width` x `height`
/// marks come back, row after row.
std::vector<Stroke> MarkSubject(SubjectMap const& map, std::size_t width, std::size_t height);

} // namespace Velnor::Proc::Kernels
