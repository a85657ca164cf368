// The settings of the plug-in's effects on shapes, faces and cuts.
#include "Proc/Settings/SettingsEffectAligner.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"
#include "Proc/Settings/SettingsEffectDrawFace.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"
#include "Proc/Settings/SettingsEffectFaceMask.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Proc/Settings/SettingsEffectStitcher.h"
#include "Proc/Settings/Types/DefineTypes.h"

namespace Velnor::Proc {

// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsEffectAligner) \
    Do(SettingsEffectCutter) \
    Do(SettingsEffectDirectionalAreaDeformation) \
    Do(SettingsEffectDrawFace) \
    Do(SettingsEffectEyeExtending) \
    Do(SettingsEffectFaceMask) \
    Do(SettingsEffectFaceThinning) \
    Do(SettingsEffectGrabCut) \
    Do(SettingsEffectHorizonDetector) \
    Do(SettingsEffectImplode) \
    Do(SettingsEffectRemoveBackground) \
    Do(SettingsEffectStitcher)
// clang-format on

VELNOR_DEFINE_TYPES(Shape)

} // namespace Velnor::Proc
