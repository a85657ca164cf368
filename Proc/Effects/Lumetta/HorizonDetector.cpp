// HorizonDetector: says whether the picture shows a horizon, by the two scores of a neural network: no and yes.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"

#include <string>

namespace Velnor::Proc {

class HorizonDetector : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectHorizonDetector> {
public:
    HorizonDetector(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext), predictor(MakeOneInput(PredictionOf(settings))) {}

    using EffectBaseOneInput::SetSettings;

    /// The network alone decides whether the settings are others: with the same one the last verdict stays.
    void SetSettings(SettingsEffectHorizonDetector const& next) override {
        predictor->SetSettings(PredictionOf(next));
        if (!(settings.GetNeural() == next.GetNeural())) ReplaceSettings(next);
        settings.SetBypassed(next.IsBypassed());
    }

    void ProcessInternal(DataHandle& data) override {
        DataHandle seen = AsVideo(data).MakeCopy(CopyMode::Value); // The picture itself passes untouched.
        predictor->ProcessData(seen);
        auto const& prediction = dynamic_cast<SettingsEffectNeuralPredict const&>(predictor->GetSettingsBase());
        std::vector<float> const& scores = prediction.GetResult();
        if (scores.size() < 2)
            VELNOR_THROW(EffectException, "The network gives " + std::to_string(scores.size()) +
                                              " scores; two are needed, for no horizon and for a horizon.");
        settings.SetHasHorizon(scores[1] > scores[0]); // False for equal scores and for those that are no numbers.
    }

private:
    static constexpr int SMALLEST_SIDE = 17; ///< Of the picture that the network sees, in its cells.

    static SettingsEffectNeuralPredict PredictionOf(SettingsEffectHorizonDetector const& detection) {
        return SettingsEffectNeuralPredict(detection.GetNeural()).SetFixMin(SMALLEST_SIDE);
    }

    intrusive_ptr<IOneInputEffectVideo> predictor;
};

VELNOR_EFFECT(SettingsEffectHorizonDetector, OneInput, HorizonDetector)

} // namespace Velnor::Proc
