#pragma once

#include "Core/Progress.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/EffectCatalogue.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// A value that an effect found out about a picture.
struct EffectResult {
    Proc::SettingsField const* field = nullptr;
    std::string text;
};

/// One effect of the chain, made and configured once for all photographs.
class EffectStep {
public:
    /// Throws Failure (wrong call) for an unknown effect, implementation or parameter and for a value that does not
    /// fit; what ReadPicture throws for the second picture of a two-input effect.
    EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue, Proc::ReadOptions const& reading,
               intrusive_ptr<Core::IProgressController> const& progress);

    std::string const& GetName() const { return name; }

    /// Throws what the effect throws, and Failure (output) when it gives no picture.
    void Run(Proc::DataHandle& picture);

    std::vector<EffectResult> GetResults() const; ///< Of the last run, in order of declaration.
    Core::Property GetStatistic() { return effect->GetStatistic(); }

private:
    void Configure(EffectArgument const& argument, Proc::SettingsType const& type, Proc::ReadOptions const& reading,
                   Proc::IEffectContext& context);

    std::string name;
    Proc::EffectKind kind = Proc::EffectKind::OneInput;
    std::vector<Proc::SettingsField> fields;
    intrusive_ptr<Proc::IEffect> effect;
    Proc::ConstDataHandle second; ///< Of a two-input effect.
};

} // namespace Velnor::Tool
