// Morphology: erosion and dilation by a disc, and what is made of the two, on OpenCV.
//
//     open   = erode n times, dilate n times      takes bright spots away
//     close  = dilate n times, erode n times      fills dark holes
//     smooth = open, then close
//
// Of a luma/chroma picture the luma is changed and the chroma stays; red, green and blue are changed each for itself.
// Alpha stays.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Effects/Photo/OpenCV/DiscMorphology.h"
#include "Proc/Settings/SettingsEffectMorphology.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {

class Morphology : public AdaptedEffect<SettingsEffectMorphology>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return PlaneFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        IDataVideo const& picture = AsVideo(data);
        PixFmtDescription const& format = picture.GetDescription();
        VideoHandle const result = picture.MakeCopy(CopyMode::Value);
        int const planes = format.model == ColorModel::Rgb ? format.planesCount : 1;
        for (unsigned char i = 0; i < planes; ++i) {
            bool const holdsAlpha = format.hasAlpha && format.alpha.plane == i;
            PlaneLayout const& layout = format.planes[i];
            if (holdsAlpha && layout.bytes == 1) continue;
            cv::Mat target = ViewOf(result->GetMutablePlane(i), layout);
            Change(target, FindClear(picture));
            if (!holdsAlpha) continue;
            int const channel = format.alpha.offset;
            cv::mixChannels(ReadPlane(picture, i), target, {channel, channel});
        }
        data = result;
    }

private:
    /// 255 where a pixel is clear; nothing where none is.
    static cv::Mat FindClear(IDataVideo const& picture) {
        ConstPlane const alpha = FindClearAlpha(picture);
        if (alpha.IsEmpty()) return {};
        FrameFormat const frame = picture.GetFrameFormat();
        cv::Mat clear(static_cast<int>(frame.height), static_cast<int>(frame.width), CV_8U);
        for (std::uint32_t y = 0; y < frame.height; ++y)
            for (std::uint32_t x = 0; x < frame.width; ++x)
                clear.ptr(static_cast<int>(y))[x] = *alpha.GetOffsetPtr(x, y) == 0 ? 255 : 0;
        return clear;
    }

    /// What is clear has no level: before each chain of erosions it is brighter than all, before dilations darker.
    void Change(cv::Mat& samples, cv::Mat const& clear) const {
        using enum SettingsEffectMorphology::Operation;
        // Once the discs together reach across the picture, it is of one level, and stays so.
        double const diagonal = std::hypot(samples.cols, samples.rows);
        double const enough = std::ceil(diagonal / std::max(settings.GetRadius(), 1)) + 1;
        int const iterations = static_cast<int>(std::min<double>(settings.GetIterations(), enough));
        auto const begin = [&](int neutral) {
            if (!clear.empty()) samples.setTo(cv::Scalar::all(neutral), clear);
        };
        auto const repeat = [&](void (*step)(cv::Mat&, int)) {
            for (int i = 0; i < iterations; ++i) step(samples, settings.GetRadius());
        };
        SettingsEffectMorphology::Operation const operation = settings.GetOperation();
        begin(operation == DILATE || operation == CLOSE ? 0 : 255);
        if (operation != DILATE && operation != CLOSE) repeat(&ErodeByDisc);
        if (operation != ERODE) repeat(&DilateByDisc);
        if (operation == SMOOTH) {
            begin(0);
            repeat(&DilateByDisc);
        }
        if (operation == CLOSE || operation == SMOOTH) repeat(&ErodeByDisc);
    }
};

intrusive_ptr<IEffect> CreateMorphology(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<Morphology>(factory, context);
}

} // namespace Velnor::Proc
