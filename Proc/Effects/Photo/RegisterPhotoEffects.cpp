#include "Proc/Effects/Photo/RegisterPhotoEffects.h"

#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Host/ModuleLoader.h"
#include "Proc/Host/PluginLoader.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <dlfcn.h>

namespace Velnor::Proc {
namespace {

constexpr char DLIB_MODULE[] = "libVelnorDlib.so";
constexpr char DNN_MODULE[] = "libVelnorDnn.so";
constexpr char MAGICK_MODULE[] = "libVelnorMagick.so";
constexpr char OPENCV_MODULE[] = "libVelnorOpenCV.so";
constexpr char PANORAMA_MODULE[] = "libVelnorPanorama.so";

EffectFactoryFunction FindInModule(char const* name, std::string const& classId) {
    std::filesystem::path const file = GetInstalledFolder() / name;
    void* const library = OpenModule(file);
    if (library == nullptr) {
        char const* const error = dlerror();
        VELNOR_THROW(ProcException, "The module that " + classId + " needs cannot be loaded: " +
                                        (error == nullptr ? "the loader gives no reason" : error) + ".");
    }
    auto const entry = reinterpret_cast<PhotoModuleFunction>(dlsym(library, PHOTO_MODULE_ENTRY));
    EffectFactoryFunction const create = entry == nullptr ? nullptr : entry(classId.c_str());
    if (create == nullptr)
        VELNOR_THROW(ProcException, "The module " + file.string() + " has no effect for " + classId + ".");
    return create;
}

template <char const* Module, class SettingsClass>
intrusive_ptr<IEffect> CreateFromModule(FactoryHandle const& factory, ContextHandle const& context) {
    // Tried anew by the next caller when it throws.
    static EffectFactoryFunction const create = FindInModule(Module, SettingsClass::CLASS_ID);
    return create(factory, context);
}

template <char const* Module, class SettingsClass>
void RegisterOneInput(IEffectRegistry& registry, std::string const& implName) {
    registry.RegisterOneInputEffect(SettingsClass::CLASS_ID, implName, &CreateFromModule<Module, SettingsClass>,
                                    nullptr);
}

} // namespace

void RegisterPhotoEffects(IEffectRegistry& registry) {
    RegisterOneInput<DLIB_MODULE, SettingsEffectFaceDetector>(registry, ImplPhotoNames::DLIB);
    RegisterOneInput<DNN_MODULE, SettingsEffectNeuralPredict>(registry, ImplNames::DEFAULT);
    RegisterOneInput<MAGICK_MODULE, SettingsEffectOilPaint>(registry, ImplPhotoNames::IMAGEMAGICK);
    RegisterOneInput<OPENCV_MODULE, SettingsEffectBlur>(registry, ImplNames::DEFAULT);
    RegisterOneInput<OPENCV_MODULE, SettingsEffectCLAHE>(registry, ImplNames::DEFAULT);
    RegisterOneInput<OPENCV_MODULE, SettingsEffectMorphology>(registry, ImplNames::DEFAULT);
    RegisterOneInput<OPENCV_MODULE, SettingsEffectRotate>(registry, ImplNames::DEFAULT);
    RegisterOneInput<OPENCV_MODULE, SettingsEffectSmartBlur>(registry, ImplNames::DEFAULT);
    registry.RegisterTwoInputEffect(SettingsEffectMidEqualizer::CLASS_ID, ImplNames::DEFAULT,
                                    &CreateFromModule<OPENCV_MODULE, SettingsEffectMidEqualizer>, nullptr);
    registry.RegisterTwoInputEffect(SettingsEffectGrabCutSegmentation::CLASS_ID, ImplPhotoNames::OPENCV,
                                    &CreateFromModule<OPENCV_MODULE, SettingsEffectGrabCutSegmentation>, nullptr);
    registry.RegisterVarInputEffect(SettingsEffectPanorama::CLASS_ID, ImplNames::DEFAULT,
                                    &CreateFromModule<PANORAMA_MODULE, SettingsEffectPanorama>, nullptr);
}

} // namespace Velnor::Proc
