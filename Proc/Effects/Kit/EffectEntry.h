#pragma once

#include "Proc/Interfaces/IEffectRegistry.h"

#include <initializer_list>
#include <type_traits>

namespace Velnor::Proc {

/// What a registry is told of an effect.
struct EffectEntry {
    std::string const& classId; ///< Of its settings.
    EffectKind kind;
    EffectFactoryFunction create;
};

/// Registers effects under the name of an implementation, in their order. What the registry throws passes through and
/// ends the registration.
inline void RegisterEffects(IEffectRegistry& registry, std::string const& implName,
                            std::initializer_list<EffectEntry> entries) {
    for (EffectEntry const& entry : entries) switch (entry.kind) {
        case EffectKind::OneInput:
            registry.RegisterOneInputEffect(entry.classId, implName, entry.create, nullptr);
            break;
        case EffectKind::TwoInput:
            registry.RegisterTwoInputEffect(entry.classId, implName, entry.create, nullptr);
            break;
        case EffectKind::VarInput:
            registry.RegisterVarInputEffect(entry.classId, implName, entry.create, nullptr);
        }
}

} // namespace Velnor::Proc

/// Ends the source of an effect: the class of its settings, its kind (OneInput, TwoInput or VarInput) and its own
/// class, of which a maker CreateMyEffect and an entry MyEffectEntry are made. Stands in the namespace of the class.
///
///     VELNOR_EFFECT(SettingsEffectMine, OneInput, MyEffect)
#define VELNOR_EFFECT(SettingsClass, Kind, Effect)                                                                     \
    VELNOR_DECLARE_EFFECT(Effect)                                                                                      \
    ::Velnor::intrusive_ptr<::Velnor::Proc::IEffect> Create##Effect(::Velnor::Proc::FactoryHandle const& factory,      \
                                                                    ::Velnor::Proc::ContextHandle const& context) {    \
        static_assert(std::is_base_of_v<::Velnor::Proc::I##Kind##EffectVideo, Effect>, "not of the stated kind");      \
        return ::Velnor::MakeShared<Effect>(factory, context);                                                         \
    }                                                                                                                  \
    ::Velnor::Proc::EffectEntry Effect##Entry() {                                                                      \
        return {SettingsClass::CLASS_ID, ::Velnor::Proc::EffectKind::Kind, &Create##Effect};                           \
    }

/// Declares what VELNOR_EFFECT defines, where effects are registered or one is made without a registry.
#define VELNOR_DECLARE_EFFECT(Effect)                                                                                  \
    VELNOR_API ::Velnor::intrusive_ptr<::Velnor::Proc::IEffect> Create##Effect(::Velnor::Proc::FactoryHandle const&,   \
                                                                               ::Velnor::Proc::ContextHandle const&);  \
    ::Velnor::Proc::EffectEntry Effect##Entry();

/// The entries of a list of effects, LIST(Do), that applies Do to each.
#define VELNOR_LIST_ENTRY(Effect) Effect##Entry(),

/// What a plug-in defines, its only export: registers its effects.
extern "C" VELNOR_API void Registrator(Velnor::Proc::IEffectRegistry* registry);
