#include "Tools/velnor/EffectStep.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Failure.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

/// Effects that work on halves and quarters make odd sizes even. What they add is no part of the photograph.
void CutBack(Proc::IDataVideo& picture, Proc::FrameFormat const& before) {
    Proc::FrameFormat const& after = picture.GetFrameFormat();
    auto const isMadeEven = [](std::uint32_t now, std::uint32_t then) { return then % 2 == 1 && now == then + 1; };
    bool const isWider = isMadeEven(after.width, before.width);
    bool const isHigher = isMadeEven(after.height, before.height);
    if (!isWider && !isHigher) return;
    if ((!isWider && after.width != before.width) || (!isHigher && after.height != before.height)) return;
    picture.SetRectangle(0, 0, before.width, before.height);
}

} // namespace

EffectStep::EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue,
                       Proc::ReadOptions const& reading, intrusive_ptr<Core::IProgressController> const& progress)
    : name(argument.name) {
    CatalogueEntry const& entry = catalogue.Get(argument.name);
    Proc::RegisteredEffect const& chosen = GetImplementation(entry, argument.implementation);
    kind = chosen.kind;
    // The host's own tools, such as resizing and padding, give just the size that they are asked for.
    keepsSize = chosen.implName != Proc::ImplNames::DEFAULT;
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    fields = DescribeParameters(type, kind);
    effect = catalogue.GetHost().GetFactory()->CreateEffect(chosen.classId, chosen.implName);
    effect->SetProgressController(progress);
    Configure(argument, type, reading, *catalogue.GetHost().GetContext());
}

void EffectStep::Configure(EffectArgument const& argument, Proc::SettingsType const& type,
                           Proc::ReadOptions const& reading, Proc::IEffectContext& context) {
    std::unique_ptr<Proc::Settings> const settings = type.create();
    std::vector<std::string> files;
    for (EffectArgument::Parameter const& parameter : argument.parameters) {
        if (kind != Proc::EffectKind::OneInput && parameter.key == INPUT_PARAMETER)
            files.push_back(parameter.value);
        else
            SetParameter(*settings, name, fields, parameter);
    }
    if (kind == Proc::EffectKind::TwoInput) {
        if (files.empty()) throw WrongCall(name + " works on two pictures; " + name + ":input=FILE names the second");
        if (files.size() > 1) throw WrongCall(name + " works on two pictures; input is given twice");
    }
    for (std::string const& file : files) furtherInputs.push_back(Proc::ReadPicture(file, context, reading).picture);
    effect->SetSettings(*settings);
}

std::vector<Piece> EffectStep::Run(Piece piece) {
    // The typed entries take our only handle, so that an effect that replaces the picture can drop the old one at once.
    if (auto* const one = dynamic_cast<Proc::IOneInputEffect*>(effect.get()))
        RunOnOne(*one, piece.picture);
    else if (auto* const two = dynamic_cast<Proc::ITwoInputEffect*>(effect.get()))
        two->ProcessData(piece.picture, furtherInputs.front());
    else
        return RunOnMany(std::move(piece));
    if (!piece.picture) throw Failure(ExitCode::OutputFailed, name + " gives no picture for this input");
    return {piece};
}

void EffectStep::RunOnOne(Proc::IOneInputEffect& one, Proc::DataHandle& picture) const {
    Proc::FrameFormat const before = picture->GetFrameFormat();
    one.ProcessData(picture);
    if (keepsSize && picture) CutBack(Proc::AsVideo(picture), before);
}

/// An effect on any number of pictures gives one, or puts several into the vector of its inputs.
std::vector<Piece> EffectStep::RunOnMany(Piece piece) {
    if (effect->GetSettingsBase().IsEmpty()) return {piece};
    std::vector<Proc::DataHandle> pictures{piece.picture};
    for (Proc::VideoHandle const& input : furtherInputs)
        pictures.push_back(input->MakeCopy(Proc::CopyMode::Value)); // Kept as it is for the next photograph.
    if (Proc::DataHandle const result = effect->ProcessData(pictures)) return {{result, piece.place}};
    if (pictures.empty()) throw Failure(ExitCode::OutputFailed, name + " gives no picture for this input");

    // Places are counted from where the pieces begin together: the photograph may be a part of a larger picture itself.
    Place origin{UINT32_MAX, UINT32_MAX};
    for (Proc::DataHandle const& picture : pictures) {
        Proc::Rectangle const at = Proc::AsVideo(picture).GetRectangle();
        origin = {std::min(origin.x, at.x), std::min(origin.y, at.y)};
    }
    std::vector<Piece> pieces;
    for (Proc::DataHandle const& picture : pictures) {
        Proc::Rectangle const at = Proc::AsVideo(picture).GetRectangle();
        pieces.push_back({picture, {piece.place.x + at.x - origin.x, piece.place.y + at.y - origin.y}});
    }
    return pieces;
}

bool EffectStep::HasResults() const {
    return std::ranges::any_of(fields, [](Proc::SettingsField const& field) { return field.isOutput; });
}

std::vector<EffectResult> EffectStep::GetResults() const {
    std::vector<EffectResult> results;
    Proc::Settings const& settings = effect->GetSettingsBase();
    if (settings.IsEmpty()) return results; // Nothing was looked at.
    for (Proc::SettingsField const& field : fields)
        if (field.isOutput) results.push_back({&field, field.print(settings)});
    return results;
}

std::string EffectStep::GetWarning() {
    Core::Property const statistic = effect->GetStatistic();
    Core::Property const* const warning = statistic.FindChild(Proc::WARNING_NODE);
    return warning != nullptr ? warning->GetValue() : std::string();
}

} // namespace Velnor::Tool
