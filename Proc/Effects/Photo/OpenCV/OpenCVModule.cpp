// The module of the effects on OpenCV.
#include "Proc/Effects/Photo/OpenCV/CVEffects.h"
#include "Proc/Effects/Photo/OpenCV/CVThreads.h"
#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId) {
    using namespace Velnor::Proc;
    ShareProcessorsWithOpenCV();
    if (classId == SettingsEffectBlur::CLASS_ID) return &CreateBlur;
    if (classId == SettingsEffectCLAHE::CLASS_ID) return &CreateCLAHE;
    if (classId == SettingsEffectGrabCutSegmentation::CLASS_ID) return &CreateGrabCutSegmentation;
    if (classId == SettingsEffectMidEqualizer::CLASS_ID) return &CreateMidEqualizer;
    if (classId == SettingsEffectMorphology::CLASS_ID) return &CreateMorphology;
    if (classId == SettingsEffectRotate::CLASS_ID) return &CreateRotate;
    if (classId == SettingsEffectSmartBlur::CLASS_ID) return &CreateSmartBlur;
    return nullptr;
}
