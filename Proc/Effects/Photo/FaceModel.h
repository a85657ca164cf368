#pragma once

#include "Proc/Interfaces/Plane.h"

#include <dlib/image_processing/shape_predictor.h>
#include <dlib/image_transforms/assign_image.h>

#include <filesystem>
#include <memory>

namespace Velnor::Proc {

using LandmarkModel = std::shared_ptr<dlib::shape_predictor const>;

/// The file that a face detector without a model of its own uses: that of Debian's package libdlib-data.
std::filesystem::path GetDefaultLandmarkFile();

/// Throws EffectException, naming the file and the package, when there is none.
void RequireLandmarkFile(std::filesystem::path const& file);

/// Reads a model of 68 landmarks (100 MB, half a second), or hands out the one that was read last, which the process
/// keeps. Thread-safe. Throws EffectException, naming the file, when it is no such model.
LandmarkModel LoadLandmarkModel(std::filesystem::path const& file);

/// A grey picture as dlib reads pictures; the rows stay where they are.
struct GreyView {
    ConstPlane plane;
};

inline long num_rows(GreyView const& view) { return static_cast<long>(view.plane.GetHeight()); }
inline long num_columns(GreyView const& view) { return static_cast<long>(view.plane.GetWidth()); }
inline long width_step(GreyView const& view) { return static_cast<long>(view.plane.GetStride()); }
inline void const* image_data(GreyView const& view) { return view.plane.GetData(); }

} // namespace Velnor::Proc

namespace dlib {
template <>
struct image_traits<Velnor::Proc::GreyView> {
    using pixel_type = unsigned char;
};
template <>
struct image_traits<Velnor::Proc::GreyView const> {
    using pixel_type = unsigned char;
};
} // namespace dlib
