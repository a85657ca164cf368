// The settings of the plug-in's effects on style and finish.
#include "Proc/Settings/SettingsEffectAutoGlareRemove.h"
#include "Proc/Settings/SettingsEffectBlurBokeh.h"
#include "Proc/Settings/SettingsEffectBlurRadial.h"
#include "Proc/Settings/SettingsEffectColoredGlass.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectEdgeRemove.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectRestorer.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"
#include "Proc/Settings/SettingsEffectSketch.h"
#include "Proc/Settings/SettingsEffectTiltShift.h"
#include "Proc/Settings/SettingsEffectVignette.h"
#include "Proc/Settings/Types/DefineTypes.h"

namespace Velnor::Proc {

// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsEffectAutoGlareRemove) \
    Do(SettingsEffectBlurBokeh) \
    Do(SettingsEffectBlurRadial) \
    Do(SettingsEffectColoredGlass) \
    Do(SettingsEffectCustom) \
    Do(SettingsEffectEdgeRemove) \
    Do(SettingsEffectEmpty) \
    Do(SettingsEffectOilPaint) \
    Do(SettingsEffectPixelate) \
    Do(SettingsEffectRestorer) \
    Do(SettingsEffectShapeMask) \
    Do(SettingsEffectSketch) \
    Do(SettingsEffectTiltShift) \
    Do(SettingsEffectVignette)
// clang-format on

VELNOR_DEFINE_TYPES(Style)

} // namespace Velnor::Proc
