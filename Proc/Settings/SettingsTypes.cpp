// The list of all settings classes. A class is added to the macro below, and nowhere else: from it come the CLASS_ID
// of each and the catalogue that the command line and the reference pages read.

#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectPad.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectPosterize.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Proc/Settings/SettingsEffectVibrance.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>

namespace Velnor::Proc {

#define VELNOR_SETTINGS_CLASSES(Do)                                                                                    \
    Do(SettingsColorspaceConverter) Do(SettingsEffectAlphaExtractor) Do(SettingsEffectAlphaInserter)                   \
        Do(SettingsEffectBiColorToning) Do(SettingsEffectBlackWhite) Do(SettingsEffectColorBalance)                    \
            Do(SettingsEffectColorBalanceAuto) Do(SettingsEffectCustom) Do(SettingsEffectEmpty)                        \
                Do(SettingsEffectExtraAlphaExtractor) Do(SettingsEffectGrabCutSegmentation) Do(SettingsEffectGradient) \
                    Do(SettingsEffectGradientPosterize) Do(SettingsEffectImageBlender) Do(SettingsEffectPad)           \
                        Do(SettingsEffectPixelate) Do(SettingsEffectPosterize) Do(SettingsEffectSplitToning)           \
                            Do(SettingsEffectTintTemperature) Do(SettingsEffectVibrance)                               \
                                Do(SettingsEffectWhiteBalance) Do(SettingsResizer)

#define VELNOR_DEFINE_CLASS_ID(Class) std::string const Class::CLASS_ID = #Class;
VELNOR_SETTINGS_CLASSES(VELNOR_DEFINE_CLASS_ID)

std::vector<SettingsType const*> const& SettingsType::GetAll() {
#define VELNOR_LIST_TYPE(Class) &Class::StaticType(),
    static std::vector<SettingsType const*> const types{VELNOR_SETTINGS_CLASSES(VELNOR_LIST_TYPE)};
    return types;
}

SettingsType const* SettingsType::Find(std::string_view classId) {
    auto const found = std::ranges::find(GetAll(), classId, &SettingsType::classId);
    return found == GetAll().end() ? nullptr : *found;
}

} // namespace Velnor::Proc
