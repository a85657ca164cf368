// EmptyEffect: does nothing. The smallest effect, and the one to copy for a new one's frame.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectEmpty.h"

namespace Velnor::Proc {

class EmptyEffect : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectEmpty> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;

    void ProcessInternal(DataHandle& /*data*/) override {}
};

VELNOR_EFFECT(SettingsEffectEmpty, OneInput, EmptyEffect)

} // namespace Velnor::Proc
