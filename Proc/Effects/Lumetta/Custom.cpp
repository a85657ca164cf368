// Custom: runs a function of the caller's on the picture. When the function throws, the caller's handle is as it was;
// what the function has written to the picture by then, it has written.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectCustom.h"

namespace Velnor::Proc {

class Custom : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectCustom> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;
    using EffectBaseOneInput::SetSettings;

    /// Functions cannot be compared: every call resets and assigns.
    void SetSettings(SettingsEffectCustom const& next) override { ReplaceSettings(next); }

    void ProcessInternal(DataHandle& data) override {
        // A copy, since the function may change this effect's settings while it runs.
        SettingsEffectCustom::Function const function = settings.GetFunctor();
        VideoHandle picture(&AsVideo(data));
        function(picture);
        data = picture;
    }
};

VELNOR_EFFECT(SettingsEffectCustom, OneInput, Custom)

} // namespace Velnor::Proc
