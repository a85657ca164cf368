// The settings of the plug-in's effects on colour and light.
#include "Proc/Settings/SettingsEffectAutoEnhance.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectColorReduce.h"
#include "Proc/Settings/SettingsEffectDetailsEnhance.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectHistogram.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/Settings/SettingsHistogramChannel.h"
#include "Proc/Settings/Types/DefineTypes.h"

namespace Velnor::Proc {

// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsEffectAutoEnhance) \
    Do(SettingsEffectBalanceLuma) \
    Do(SettingsEffectBiColorToning) \
    Do(SettingsEffectBlackWhite) \
    Do(SettingsEffectBlendPalette) \
    Do(SettingsEffectColorBalanceAuto) \
    Do(SettingsEffectColorReduce) \
    Do(SettingsEffectDetailsEnhance) \
    Do(SettingsEffectGradient) \
    Do(SettingsEffectGradientPosterize) \
    Do(SettingsEffectHistogram) \
    Do(SettingsEffectReduceLocalLuma) \
    Do(SettingsEffectReplaceChroma) \
    Do(SettingsEffectTintTemperature) \
    Do(SettingsEffectWhiteBalance) \
    Do(SettingsHistogramChannel)
// clang-format on

VELNOR_DEFINE_TYPES(Color)

} // namespace Velnor::Proc
