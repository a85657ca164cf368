// Rotate: turns the picture about its centre, counter-clockwise, on OpenCV.
//
// Quarter turns move samples and are exact; any other angle is interpolated bicubically, against the fill colour at the
// picture's border. The result is as large as the picture, as the whole turned picture (quarter turns, unless something
// else is asked for), or as the largest upright rectangle of the picture's shape that lies inside of the turned one:
// its sides are s times the picture's, with
//
//     s = min(width / (width |cos| + height |sin|), height / (width |sin| + height |cos|))
//
// Formats with subsampled chroma are turned at full resolution.
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Photo/AdaptedEffect.h"
#include "Proc/Effects/Photo/OpenCV/AlphaWeights.h"
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVPicture.h"
#include "Proc/Settings/SettingsEffectRotate.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Velnor::Proc {
namespace {

/// Sides of the result. `quarters` is the number of quarter turns, or -1 for any other angle.
cv::Size ResultSize(cv::Size size, double angle, int quarters, SettingsEffectRotate::OutputSizeMode mode) {
    bool const isExact = quarters >= 0;
    if (mode == SettingsEffectRotate::AUTO) mode = isExact ? SettingsEffectRotate::WHOLE : SettingsEffectRotate::SAME;
    if (mode == SettingsEffectRotate::SAME) return size;
    bool const isUpright = quarters == 0 || quarters == 2;
    double const radians = angle * std::numbers::pi / 180.0;
    double const c = !isExact ? std::abs(std::cos(radians)) : (isUpright ? 1.0 : 0.0);
    double const s = !isExact ? std::abs(std::sin(radians)) : (isUpright ? 0.0 : 1.0);
    double const across = size.width * c + size.height * s;
    double const down = size.width * s + size.height * c;
    // Sums of sines and cosines that should be whole numbers are so but for their last digits.
    constexpr double TINY = 1e-7;
    if (mode == SettingsEffectRotate::WHOLE)
        return {static_cast<int>(std::ceil(across - TINY)), static_cast<int>(std::ceil(down - TINY))};
    double const scale = std::min(size.width / across, size.height / down);
    auto const side = [&](int whole) { return std::max(1, static_cast<int>(std::floor(whole * scale + TINY))); };
    return {side(size.width), side(size.height)};
}

/// The samples turned by quarters, cut or laid into the middle of the target.
void TurnByQuarters(cv::Mat const& source, cv::Mat& target, int quarters, cv::Scalar const& fill) {
    cv::Mat turned = source;
    if (quarters == 1) cv::rotate(source, turned, cv::ROTATE_90_COUNTERCLOCKWISE);
    if (quarters == 2) cv::rotate(source, turned, cv::ROTATE_180);
    if (quarters == 3) cv::rotate(source, turned, cv::ROTATE_90_CLOCKWISE);
    target.setTo(fill);
    cv::Size const common(std::min(turned.cols, target.cols), std::min(turned.rows, target.rows));
    auto const middle = [&](cv::Mat const& of) {
        return of(cv::Rect((of.cols - common.width) / 2, (of.rows - common.height) / 2, common.width, common.height));
    };
    cv::Mat place = middle(target);
    middle(turned).copyTo(place);
}

void Turn(cv::Mat const& source, cv::Mat& target, double angle, cv::Scalar const& fill,
          int border = cv::BORDER_CONSTANT) {
    cv::Point2f const centre(static_cast<float>(source.cols - 1) / 2, static_cast<float>(source.rows - 1) / 2);
    cv::Mat matrix = cv::getRotationMatrix2D(centre, angle, 1.0);
    matrix.at<double>(0, 2) += (target.cols - source.cols) / 2.0;
    matrix.at<double>(1, 2) += (target.rows - source.rows) / 2.0;
    cv::warpAffine(source, target, matrix, target.size(), cv::INTER_CUBIC, border, fill);
}

/// Colours once more, by their alpha. A margin of the colour to fill with stands for all that is outside.
void TurnWeighted(cv::Mat const& source, cv::Mat const& weights, int alphaChannel, cv::Mat& target, double angle,
                  cv::Scalar const& fill, double fillWeight) {
    auto const withMargin = [](cv::Mat const& samples, cv::Scalar const& value) {
        constexpr int MARGIN = 4; // Of a cubic's reach and more.
        cv::Mat wider;
        cv::copyMakeBorder(samples, wider, MARGIN, MARGIN, MARGIN, MARGIN, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
                           value);
        return wider;
    };
    auto const turn = [&](cv::Mat const& samples) {
        cv::Mat turned(target.size(), samples.type());
        Turn(samples, turned, angle, {}, cv::BORDER_REPLICATE);
        return turned;
    };
    BlurWeighted(withMargin(source, fill), withMargin(weights, fillWeight), alphaChannel, turn, target);
}

} // namespace

class Rotate : public AdaptedEffect<SettingsEffectRotate>, public OnOpenCV {
public:
    using AdaptedEffect::AdaptedEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return FullFormats(); }

    void ProcessInternalCSC(DataHandle& data) override {
        VideoHandle const covered = CopyCovered(AsVideo(data));
        IDataVideo const& picture = *covered;
        PixFmtDescription const& format = picture.GetDescription();
        double const angle = std::remainder(settings.GetAngle(), 360.0);
        int const quarters = std::remainder(angle, 90.0) == 0 ? (static_cast<int>(angle) / 90 + 4) % 4 : -1;
        FrameFormat frame = picture.GetFrameFormat();
        cv::Size const size = ResultSize({static_cast<int>(frame.width), static_cast<int>(frame.height)}, angle,
                                         quarters, settings.GetOutputSizeMode());
        frame.width = static_cast<std::uint32_t>(size.width);
        frame.height = static_cast<std::uint32_t>(size.height);
        VideoHandle const pixel = context->CreateImage(format.format, FrameFormat::Square(1, 1));
        pixel->Fill(settings.GetFillColor());
        VideoHandle const result = context->CreateImage(format.format, frame);
        for (unsigned char i = 0; i < format.planesCount; ++i) {
            cv::Mat target = ViewOf(result->GetMutablePlane(i), format.planes[i]);
            cv::Scalar const fill = FillOf(pixel->GetPlane(i));
            if (quarters >= 0) {
                TurnByQuarters(ReadPlane(picture, i), target, quarters, fill);
                continue;
            }
            Turn(ReadPlane(picture, i), target, angle, fill);
            if (cv::Mat const weights = MakeAlphaWeights(picture, i); !weights.empty())
                TurnWeighted(ReadPlane(picture, i), weights, i == format.alpha.plane ? format.alpha.offset : -1, target,
                             angle, fill, settings.GetFillColor()[3]);
        }
        data = result;
    }

private:
    static cv::Scalar FillOf(ConstPlane const& pixel) {
        cv::Scalar fill;
        for (int i = 0; i < static_cast<int>(pixel.GetWidth()); ++i) fill[i] = pixel.GetRow(0)[i];
        return fill;
    }
};

intrusive_ptr<IEffect> CreateRotate(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeCVEffect<Rotate>(factory, context);
}

} // namespace Velnor::Proc
