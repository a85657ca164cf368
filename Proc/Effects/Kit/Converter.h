#pragma once

#include "Proc/Effects/Kit/SubEffects.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

#include <utility>

namespace Velnor::Proc {

/// The host's converter of pixel formats, made at its first use: most pictures need none.
class Converter {
public:
    explicit Converter(FactoryHandle effectFactory) : factory(std::move(effectFactory)) {}

    /// A copy of the picture in that format, with its extra alpha and attributes.
    DataHandle Convert(IDataVideo const& picture, PixFmt format) {
        DataHandle copy = picture.MakeCopy(CopyMode::Value);
        if (picture.GetPixFmt() == format) return copy;
        if (!effect)
            effect = MakeShared<OneInputSubEffect>(
                factory->CreateOneInputEffect(SettingsColorspaceConverter::CLASS_ID, ImplNames::DEFAULT));
        RunWith(*effect, SettingsColorspaceConverter(format, true), copy);
        return copy;
    }

private:
    FactoryHandle factory;
    intrusive_ptr<IOneInputEffectVideo> effect;
};

} // namespace Velnor::Proc
