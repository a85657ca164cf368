#pragma once

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Host/MemoryRoom.h"

#include <exception>
#include <new>
#include <type_traits>

namespace Velnor::Proc {

/// Rethrows an exception that is the framework's, or the standard library's, as it is; one of `LibraryError` as an
/// EffectException with its text, or as std::bad_alloc when that is what it says.
template <class LibraryError, class Work>
void TranslateErrors(std::string const& library, Work const& work) {
    try {
        work();
    } catch (LibraryError const& error) {
        if (IsAboutMemory(error.what(), 0)) throw std::bad_alloc();
        VELNOR_THROW(EffectException, library + " refused the picture: " + error.what());
    }
}

/// An effect whose work is a library's. When that throws, the caller sees an EffectException.
template <class Effect, class LibraryError>
class GuardedOneInput : public Effect {
public:
    using Effect::Effect;
    void ProcessInternal(DataHandle& data) override {
        TranslateErrors<LibraryError>(Effect::LIBRARY, [&] { Effect::ProcessInternal(data); });
    }
};

/// The same for effects on two pictures.
template <class Effect, class LibraryError>
class GuardedTwoInput : public Effect {
public:
    using Effect::Effect;
    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        TranslateErrors<LibraryError>(Effect::LIBRARY, [&] { Effect::ProcessInternal(first, second); });
    }
};

/// The same for effects on any number of pictures.
template <class Effect, class LibraryError>
class GuardedVarInput : public Effect {
public:
    using Effect::Effect;
    DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) override {
        DataHandle result;
        TranslateErrors<LibraryError>(Effect::LIBRARY, [&] { result = Effect::ProcessInternal(inputs); });
        return result;
    }
};

/// What a factory function of a module returns.
template <class Effect, class LibraryError>
intrusive_ptr<IEffect> MakeGuardedEffect(FactoryHandle const& factory, ContextHandle const& context) {
    if constexpr (std::is_base_of_v<ITwoInputEffect, Effect>)
        return MakeShared<GuardedTwoInput<Effect, LibraryError>>(factory, context);
    else if constexpr (std::is_base_of_v<IVarInputEffect, Effect>)
        return MakeShared<GuardedVarInput<Effect, LibraryError>>(factory, context);
    else
        return MakeShared<GuardedOneInput<Effect, LibraryError>>(factory, context);
}

} // namespace Velnor::Proc
