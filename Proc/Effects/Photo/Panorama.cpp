// Panorama: joins overlapping photographs, by OpenCV's pipeline: ORB features matched between all pairs, cameras that
// fit the matches best, exposure compensation, seams through what differs least, and blending in frequency bands.
// Exposure and blending are OpenCV's too, but done in rows and strips, in a fraction of the memory.
//
// M. Brown, D. Lowe, "Automatic Panoramic Image Stitching using Invariant Features", International Journal of Computer
// Vision 74(1), 2007.
#include "Proc/Effects/Photo/Guarded.h"
#include "Proc/Effects/Photo/LargestRectangle.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Effects/Photo/OpenCV/RowCompensator.h"
#include "Proc/Effects/Photo/OpenCV/StripBlender.h"
#include "Proc/Effects/Photo/PanoramaSize.h"
#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectPanorama.h"

#include <opencv2/core/ocl.hpp>
#include <opencv2/stitching.hpp>

#include <algorithm>
#include <string>

namespace Velnor::Proc {
namespace {

using Pictures = std::vector<DataHandle>;

constexpr std::uint64_t SEED = 0x4c756d65747461; ///< The same pictures make the same panorama.

/// The numbers of the pictures, from 1, that are not among `joined`: "2", "2 and 4", "2, 3 and 4".
std::string ListMissing(std::vector<int> const& joined, std::size_t count) {
    std::vector<std::string> missing;
    for (std::size_t i = 0; i < count; ++i)
        if (std::ranges::find(joined, static_cast<int>(i)) == joined.end()) missing.push_back(std::to_string(i + 1));
    std::string text;
    for (std::size_t i = 0; i < missing.size(); ++i)
        text += (i == 0 ? "" : (i + 1 == missing.size() ? " and " : ", ")) + missing[i];
    return text;
}

void RequireJoined(cv::Stitcher::Status status, std::vector<int> const& joined, std::size_t count) {
    constexpr char ADVICE[] = "; overlaps of a third, with some detail in them, are needed.";
    if (status == cv::Stitcher::ERR_NEED_MORE_IMGS)
        VELNOR_THROW(EffectException,
                     (count == 2 ? std::string("Pictures 1 and 2 do not match")
                                 : "None of the " + std::to_string(count) + " pictures matches another") +
                         ADVICE);
    if (status != cv::Stitcher::OK)
        VELNOR_THROW(EffectException, "The pictures match, but not as views from one camera: no " +
                                          std::string(status == cv::Stitcher::ERR_HOMOGRAPHY_EST_FAIL
                                                          ? "arrangement of them was found."
                                                          : "refinement of their arrangement was found."));
    if (joined.size() == count) return;
    bool const isOne = joined.size() + 1 == count;
    VELNOR_THROW(EffectException, (isOne ? "Picture " : "Pictures ") + ListMissing(joined, count) +
                                      (isOne ? " does" : " do") + " not match the others" + ADVICE);
}

/// Pictures that are joined without a match that speaks for it leave nothing to refine their arrangement by, which
/// OpenCV takes for a fault of its caller.
cv::Stitcher::Status Arrange(cv::Stitcher& stitcher, std::vector<cv::Mat> const& views) {
    try {
        return stitcher.estimateTransform(views);
    } catch (cv::Exception const& error) {
        if (error.code != cv::Error::StsAssert) throw;
        return cv::Stitcher::ERR_CAMERA_PARAMS_ADJUST_FAIL;
    }
}

/// The focal length that the stitcher makes the panorama for, in pixels of the pictures.
double FindScale(cv::Stitcher const& stitcher) {
    std::vector<double> lengths;
    for (cv::detail::CameraParams const& camera : stitcher.cameras()) lengths.push_back(camera.focal);
    std::ranges::sort(lengths);
    std::size_t const half = lengths.size() / 2;
    double const median = lengths.size() % 2 == 1 ? lengths[half] : (lengths[half - 1] + lengths[half]) / 2;
    return median / stitcher.workScale();
}

/// Where the stitcher would place the pictures.
std::vector<PanoramaPlace> FindPlaces(cv::Stitcher const& stitcher, std::vector<cv::Mat> const& views) {
    auto const warper = stitcher.warper()->create(static_cast<float>(FindScale(stitcher)));
    std::vector<cv::detail::CameraParams> const cameras = stitcher.cameras();
    std::vector<PanoramaPlace> places;
    for (std::size_t i = 0; i < views.size(); ++i) {
        cv::detail::CameraParams camera = cameras[i];
        camera.focal /= stitcher.workScale();
        camera.ppx /= stitcher.workScale();
        camera.ppy /= stitcher.workScale();
        cv::Mat intrinsic;
        camera.K().convertTo(intrinsic, CV_32F);
        cv::Rect const place = warper->warpRoi(views[i].size(), intrinsic, camera.R);
        places.push_back({place.x, place.y, place.width, place.height});
    }
    return places;
}

} // namespace

class Panorama : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectPanorama>, public OnOpenCV {
public:
    Panorama(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseVarInput(effectFactory, effectContext, ImplNames::DEFAULT),
          converter(MakeOneInput(SettingsColorspaceConverter(PixFmt::BGR24, false))) {}

    DataHandle ProcessInternal(Pictures const& inputs) override {
        if (inputs.size() < 2)
            VELNOR_THROW(EffectException, "A panorama is made of two pictures or more, " +
                                              std::to_string(inputs.size()) +
                                              (inputs.size() == 1 ? " is given." : " are given."));
        for (std::size_t i = 0; i < inputs.size(); ++i) RequireSize(inputs[i], i + 1);
        Pictures copies; // What the views below look at.
        std::vector<cv::Mat> views;
        for (auto const& input : inputs) {
            copies.push_back(AsVideo(input).MakeCopy(CopyMode::Share));
            converter->ProcessData(copies.back());
            views.push_back(ReadPlane(std::as_const(AsVideo(copies.back())), 0));
        }
        DataHandle const result = Join(views);
        result->CopyAttributes(*inputs[0]);
        return result;
    }

private:
    static constexpr std::uint32_t LEAST_SIDE = 32; ///< Of a picture in which features are looked for.

    static void RequireSize(DataHandle const& input, std::size_t number) {
        RequirePicture(input.get());
        FrameFormat const frame = input->GetFrameFormat();
        if (std::min(frame.width, frame.height) < LEAST_SIDE)
            VELNOR_THROW(EffectException, "Picture " + std::to_string(number) + " of the panorama is " +
                                              SizeText(frame) + " pixels; both sides must be " +
                                              std::to_string(LEAST_SIDE) + " or more.");
    }

    DataHandle Join(std::vector<cv::Mat> const& views) const {
        cv::ocl::setUseOpenCL(false); // The result is that of any other machine.
        cv::theRNG().state = SEED;
        bool const isFlat = settings.GetMode() == SettingsEffectPanorama::SCANS;
        auto const stitcher = cv::Stitcher::create(isFlat ? cv::Stitcher::SCANS : cv::Stitcher::PANORAMA);
        stitcher->setExposureCompensator(cv::makePtr<RowCompensator>());
        stitcher->setPanoConfidenceThresh(settings.GetConfidence());
        cv::Stitcher::Status const status = Arrange(*stitcher, views);
        RequireJoined(status, stitcher->component(), views.size());
        RequirePossibleSize(FindPlaces(*stitcher, views));
        auto const blender = cv::makePtr<StripBlender>();
        stitcher->setBlender(blender);
        cv::Mat unused;
        RequireJoined(stitcher->composePanorama(unused), stitcher->component(), views.size());
        cv::Mat const joined = blender->GetResult();
        cv::Mat const mask = blender->GetCoverage();
        return settings.GetBorder() == SettingsEffectPanorama::CLEAR ? MakeClear(joined, mask) : Crop(joined, mask);
    }

    VideoHandle MakeClear(cv::Mat const& joined, cv::Mat const& mask) const {
        FrameFormat const frame =
            FrameFormat::Square(static_cast<std::uint32_t>(joined.cols), static_cast<std::uint32_t>(joined.rows));
        VideoHandle const result = context->CreateImage(PixFmt::RGBA, frame);
        for (int y = 0; y < joined.rows; ++y) {
            unsigned char const* from = joined.ptr<unsigned char>(y);
            unsigned char const* const opacity = mask.ptr<unsigned char>(y);
            unsigned char* to = result->GetMutablePlane(0).GetRow(static_cast<std::uint64_t>(y));
            for (int x = 0; x < joined.cols; ++x, from += 3, to += 4) {
                std::reverse_copy(from, from + 3, to);
                to[3] = opacity[x];
            }
        }
        return result;
    }

    VideoHandle Crop(cv::Mat const& joined, cv::Mat const& mask) const {
        Rectangle const part = FindLargestRectangle(ConstPlane(mask.data, static_cast<std::int64_t>(mask.step[0]),
                                                               static_cast<std::uint64_t>(mask.cols),
                                                               static_cast<std::uint64_t>(mask.rows)));
        if (part.width == 0) VELNOR_THROW(EffectException, "The joined pictures show nothing.");
        VideoHandle const result = context->CreateImage(PixFmt::RGB24, FrameFormat::Square(part.width, part.height));
        for (std::uint32_t y = 0; y < part.height; ++y) {
            unsigned char const* from = joined.ptr<unsigned char>(static_cast<int>(part.y + y)) + 3 * part.x;
            unsigned char* to = result->GetMutablePlane(0).GetRow(y);
            for (std::uint32_t x = 0; x < part.width; ++x, from += 3, to += 3) std::reverse_copy(from, from + 3, to);
        }
        return result;
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
};

} // namespace Velnor::Proc

Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId) {
    using namespace Velnor::Proc;
    return classId == SettingsEffectPanorama::CLASS_ID ? &MakeCVEffect<Panorama> : nullptr;
}
