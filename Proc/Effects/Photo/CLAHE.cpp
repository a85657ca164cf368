// CLAHE: contrast-limited adaptive histogram equalisation of the luma (K. Zuiderveld, "Contrast Limited Adaptive
// Histogram Equalization", Graphics Gems IV, 1994), on 8 x 8 tiles. Chroma and alpha stay.
#include "Proc/Effects/Photo/MatView.h"
#include "Proc/Effects/Photo/PhotoEffect.h"
#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"

#include <opencv2/imgproc.hpp>

#include <string>

namespace Velnor::Proc {

class CLAHE : public PhotoEffect<SettingsEffectCLAHE> {
public:
    using PhotoEffect::PhotoEffect;

    std::vector<PixFmt> const& GetSupportedFormats() const override { return LumaPlaneFormats(); }

    void ProcessInternalCSC(intrusive_ptr<IData>& data) override {
        double const limit = settings.GetClipLimit();
        if (!(limit >= 0)) // Not a number neither.
            VELNOR_THROW(EffectException, "The clip limit of the local contrast effect is " + std::to_string(limit) +
                                              "; it is 0 or more.");
        IDataVideo const& picture = AsVideo(data);
        WithOpenCV("local contrast", [&] {
            constexpr int TILES = 8;
            VideoHandle const result = picture.MakeCopy(CopyMode::Value);
            cv::Mat samples = AsMat(result->GetMutablePlane(0));
            // Multiples of a flat histogram's level beyond 256 limit nothing.
            cv::createCLAHE(std::min(limit, 256.0), {TILES, TILES})->apply(samples, samples);
            data = result;
        });
    }
};

intrusive_ptr<IEffect> CreateCLAHE(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeEffect<CLAHE>(factory, context);
}

} // namespace Velnor::Proc
