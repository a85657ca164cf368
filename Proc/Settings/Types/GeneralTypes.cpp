// The settings of the host's general effects.
#include "Proc/Interfaces/IResize.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectCrop.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectFlip.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectNoiseVideo.h"
#include "Proc/Settings/SettingsEffectPad.h"
#include "Proc/Settings/SettingsEffectPosterize.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectVibrance.h"
#include "Proc/Settings/SettingsEffectVideoGenerator.h"
#include "Proc/Settings/SettingsResizer.h"
#include "Proc/Settings/Types/DefineTypes.h"

namespace Velnor::Proc {

// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsColorspaceConverter) \
    Do(SettingsEffectAlphaExtractor) \
    Do(SettingsEffectAlphaInserter) \
    Do(SettingsEffectColorBalance) \
    Do(SettingsEffectCrop) \
    Do(SettingsEffectExtraAlphaExtractor) \
    Do(SettingsEffectFlip) \
    Do(SettingsEffectImageBlender) \
    Do(SettingsEffectNoiseVideo) \
    Do(SettingsEffectPad) \
    Do(SettingsEffectPosterize) \
    Do(SettingsEffectRemapping) \
    Do(SettingsEffectSplitToning) \
    Do(SettingsEffectVibrance) \
    Do(SettingsEffectVideoGenerator) \
    Do(SettingsResizer)
// clang-format on

VELNOR_DEFINE_TYPES(General)
std::string const IResize::CLASS_ID = SettingsResizer::CLASS_ID;

} // namespace Velnor::Proc
