#include "Tools/velnor/EffectStep.h"

#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Failure.h"

namespace Velnor::Tool {
EffectStep::EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue,
                       Proc::ReadOptions const& reading, intrusive_ptr<Core::IProgressController> const& progress)
    : name(argument.name) {
    CatalogueEntry const& entry = catalogue.Get(argument.name);
    Proc::RegisteredEffect const& chosen = GetImplementation(entry, argument.implementation);
    kind = chosen.kind;
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    fields = DescribeParameters(type, kind);
    effect = catalogue.GetHost().GetFactory()->CreateEffect(chosen.classId, chosen.implName);
    effect->SetProgressController(progress);
    Configure(argument, type, reading, *catalogue.GetHost().GetContext());
}

void EffectStep::Configure(EffectArgument const& argument, Proc::SettingsType const& type,
                           Proc::ReadOptions const& reading, Proc::IEffectContext& context) {
    std::unique_ptr<Proc::Settings> const settings = type.create();
    std::string secondFile;
    for (EffectArgument::Parameter const& parameter : argument.parameters) {
        if (kind == Proc::EffectKind::TwoInput && parameter.key == INPUT_PARAMETER)
            secondFile = parameter.value;
        else
            SetParameter(*settings, name, fields, parameter);
    }
    if (kind == Proc::EffectKind::TwoInput) {
        if (secondFile.empty())
            throw WrongCall(name + " works on two pictures; " + name + ":input=FILE names the second");
        second = Proc::ReadPicture(secondFile, context, reading).picture;
    }
    effect->SetSettings(*settings);
}

void EffectStep::Run(Proc::DataHandle& picture) {
    // The typed entries take our only handle, so that an effect that replaces the picture can drop the old one at once.
    if (auto* const one = dynamic_cast<Proc::IOneInputEffect*>(effect.get())) {
        one->ProcessData(picture);
    } else if (auto* const two = dynamic_cast<Proc::ITwoInputEffect*>(effect.get())) {
        two->ProcessData(picture, second);
    } else {
        Proc::DataHandle const result = effect->ProcessData(std::vector<Proc::DataHandle>{picture});
        if (result) picture = result; // Empty settings give null and leave the picture as it is.
    }
    if (!picture) throw Failure(ExitCode::OutputFailed, name + " gives no picture for this input");
}

std::vector<EffectResult> EffectStep::GetResults() const {
    std::vector<EffectResult> results;
    for (Proc::SettingsField const& field : fields)
        if (field.isOutput) results.push_back({&field, field.print(effect->GetSettingsBase())});
    return results;
}

} // namespace Velnor::Tool
