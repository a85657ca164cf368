// Rotation about the centre, counter-clockwise: quarter turns exactly, others by bicubic interpolation. The edge of the
// turned picture is laid over the fill colour with the share of each pixel that it covers.
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffect.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsEffectRotate.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace Velnor::Proc {
namespace {

using SizeMode = SettingsEffectRotate::OutputSizeMode;

struct Turn {
    double cosine;
    double sine; ///< Of a counter-clockwise angle, y pointing down.
};

/// Exact for quarter turns.
Turn MakeTurn(double degrees) {
    double const angle = std::remainder(degrees, 360.0);
    if (angle == 0) return {1, 0};
    if (std::abs(angle) == 180) return {-1, 0};
    if (std::abs(angle) == 90) return {0, angle > 0 ? 1.0 : -1.0};
    double const radians = angle * std::numbers::pi / 180;
    return {std::cos(radians), std::sin(radians)};
}

FrameFormat MakeFrame(FrameFormat frame, SizeMode mode, Turn const& turn) {
    double const w = frame.width;
    double const h = frame.height;
    double const wide = w * std::abs(turn.cosine) + h * std::abs(turn.sine);
    double const high = w * std::abs(turn.sine) + h * std::abs(turn.cosine);
    double const scale = std::min(w / wide, h / high);
    auto const side = [](double length) { return static_cast<std::uint32_t>(std::max(1.0, length)); };
    constexpr double ROUNDING = 1e-6;
    if (mode == SettingsEffectRotate::WHOLE) {
        frame.width = side(std::ceil(wide - ROUNDING));
        frame.height = side(std::ceil(high - ROUNDING));
    } else if (mode == SettingsEffectRotate::INNER) {
        frame.width = side(std::floor(w * scale + ROUNDING));
        frame.height = side(std::floor(h * scale + ROUNDING));
    }
    return frame;
}

/// From positions in the result to positions in the source, sample centres at integers.
cv::Matx23d MakeMap(FrameFormat const& source, FrameFormat const& target, Turn const& turn) {
    double const sourceX = (source.width - 1) / 2.0;
    double const sourceY = (source.height - 1) / 2.0;
    double const targetX = (target.width - 1) / 2.0;
    double const targetY = (target.height - 1) / 2.0;
    return {turn.cosine, -turn.sine,  sourceX - turn.cosine * targetX + turn.sine * targetY,
            turn.sine,   turn.cosine, sourceY - turn.sine * targetX - turn.cosine * targetY};
}

/// Lays `turned` over `target` where `coverage` (0 to 255) says.
void LayOver(cv::Mat const& turned, cv::Mat const& coverage, cv::Mat& target) {
    int const channels = target.channels();
    for (int y = 0; y < target.rows; ++y) {
        auto const* const share = coverage.ptr<unsigned char>(y);
        auto const* const from = turned.ptr<unsigned char>(y);
        auto* const to = target.ptr<unsigned char>(y);
        for (int i = 0; i < target.cols * channels; ++i) {
            int const a = share[i / channels];
            to[i] = static_cast<unsigned char>((a * from[i] + (255 - a) * to[i] + 127) / 255);
        }
    }
}

} // namespace

class Rotate : public PhotoEffect<SettingsEffectRotate> {
public:
    using PhotoEffect::PhotoEffect;

    /// Formats without subsampled chroma: a turned chroma sample would lie between the new ones.
    std::vector<PixFmt> const& GetSupportedFormats() const override {
        static std::vector<PixFmt> const formats{PixFmt::GRAY8, PixFmt::RGB24,   PixFmt::BGR24,   PixFmt::RGBA,
                                                 PixFmt::BGRA,  PixFmt::YUV444P, PixFmt::YUVA444P};
        return formats;
    }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
        double const angle = settings.GetAngle();
        SizeMode const mode = settings.GetOutputSizeMode();
        if (!std::isfinite(angle))
            VELNOR_THROW(EffectException, "The angle of the rotation is " + std::to_string(angle) +
                                              "; any finite number of degrees is possible.");
        if (mode < SettingsEffectRotate::SAME || mode > SettingsEffectRotate::INNER)
            VELNOR_THROW(EffectException, "The output size mode of the rotation is " +
                                              std::to_string(static_cast<int>(mode)) + "; 0 to 2 are known.");
        IDataVideo const& picture = AsVideo(data);
        Turn const turn = MakeTurn(angle);
        FrameFormat const frame = MakeFrame(picture.GetFrameFormat(), mode, turn);
        WithOpenCV("rotation", [&] {
            VideoHandle const result = context->CreateImage(picture.GetPixFmt(), frame);
            result->CopyAttributes(picture);
            result->Fill(settings.GetFillColor());
            Draw(picture, *result, MakeMap(picture.GetFrameFormat(), frame, turn));
            data = result;
        });
    }

private:
    static void Draw(IDataVideo const& picture, IDataVideo& result, cv::Matx23d const& map) {
        FrameFormat const source = picture.GetFrameFormat();
        FrameFormat const target = result.GetFrameFormat();
        cv::Size const size(static_cast<int>(target.width), static_cast<int>(target.height));
        cv::Mat const all(static_cast<int>(source.height), static_cast<int>(source.width), CV_8U, cv::Scalar(255));
        cv::Mat coverage;
        cv::warpAffine(all, coverage, map, size, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT, 0);
        for (unsigned char i = 0; i < picture.GetDescription().planesCount; ++i) {
            cv::Mat turned;
            cv::warpAffine(AsMat(picture.GetPlane(i)), turned, map, size, cv::INTER_CUBIC | cv::WARP_INVERSE_MAP,
                           cv::BORDER_REPLICATE);
            cv::Mat samples = AsMat(result.GetMutablePlane(i));
            LayOver(turned, coverage, samples);
        }
    }
};

intrusive_ptr<IEffect> CreateRotate(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<Rotate>(factory, context);
}

} // namespace Velnor::Proc
