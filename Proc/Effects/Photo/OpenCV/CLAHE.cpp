// CLAHE: contrast-limited adaptive histogram equalisation of the luma, by OpenCV.
//
// Each of 8 x 8 tiles gets the table that would make its histogram flat, the histogram first cut at the clip limit and
// what was cut spread over all levels; between the tiles' centres the tables are interpolated. A clip limit of 0 sets
// no limit. Smaller pictures are mirrored to whole tiles.
//
// K. Zuiderveld, "Contrast Limited Adaptive Histogram Equalization", Graphics Gems IV, 1994.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace Velnor::Proc {
namespace {

constexpr int TILES = 8;

/// The plane with its last columns and rows mirrored until it has whole tiles. OpenCV adds whole tiles of its own to
/// sides that are divisible already when the other side is not, and cannot mirror a side shorter than the margin.
cv::Mat ExtendToTiles(cv::Mat const& plane) {
    int const right = (TILES - plane.cols % TILES) % TILES;
    int const below = (TILES - plane.rows % TILES) % TILES;
    cv::Mat extended;
    cv::copyMakeBorder(plane, extended, 0, below, 0, right, cv::BORDER_REFLECT | cv::BORDER_ISOLATED);
    return extended;
}

} // namespace

class CLAHE : public AdaptedEffect<SettingsEffectCLAHE>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return LumaPlaneFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const result = CopyCovered(AsVideo(data));
        cv::Mat equalised;
        // Multiples of a flat histogram's level beyond 256 limit nothing, and OpenCV counts in whole numbers.
        double const limit = std::min(settings.GetClipLimit(), 256.0);
        cv::createCLAHE(limit, {TILES, TILES})->apply(ExtendToTiles(ReadPlane(*result, 0)), equalised);
        cv::Mat target = ViewOf(result->GetMutablePlane(0), result->GetDescription().planes[0]);
        equalised(cv::Rect(0, 0, target.cols, target.rows)).copyTo(target);
        data = result;
    }
};

intrusive_ptr<IEffect> CreateCLAHE(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<CLAHE>(factory, context);
}

} // namespace Velnor::Proc
