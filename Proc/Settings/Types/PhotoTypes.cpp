// The settings of the host's effects on heavy libraries.
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"
#include "Proc/Settings/Types/DefineTypes.h"

namespace Velnor::Proc {

// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsEffectBlur) \
    Do(SettingsEffectCLAHE) \
    Do(SettingsEffectFaceDetector) \
    Do(SettingsEffectGrabCutSegmentation) \
    Do(SettingsEffectMidEqualizer) \
    Do(SettingsEffectMorphology) \
    Do(SettingsEffectNeuralBase) \
    Do(SettingsEffectNeuralPredict) \
    Do(SettingsEffectPanorama) \
    Do(SettingsEffectRotate) \
    Do(SettingsEffectSmartBlur)
// clang-format on

VELNOR_DEFINE_TYPES(Photo)

} // namespace Velnor::Proc
