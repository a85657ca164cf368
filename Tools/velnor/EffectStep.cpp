#include "Tools/velnor/EffectStep.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Tools/velnor/EffectParameters.h"

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
    : name(argument.name), factory(catalogue.GetHost().GetFactory()), controller(progress) {
    CatalogueEntry const& entry = catalogue.Get(argument.name);
    chosen = GetImplementation(entry, argument.implementation);
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    fields = DescribeParameters(type, chosen.kind);
    settings = Parse(argument, type);
    for (std::string const& file : furtherFiles)
        furtherInputs.push_back(Proc::ReadPicture(file, *catalogue.GetHost().GetContext(), reading).picture);
    statistic = Make()->GetStatistic(); // Made here too, so that one that cannot be made is told before any work.
}

std::unique_ptr<Proc::Settings> EffectStep::Parse(EffectArgument const& argument, Proc::SettingsType const& type) {
    std::unique_ptr<Proc::Settings> parsed = type.create();
    for (EffectArgument::Parameter const& parameter : argument.parameters) {
        if (chosen.kind != Proc::EffectKind::OneInput && parameter.key == INPUT_PARAMETER)
            furtherFiles.push_back(parameter.value);
        else
            SetParameter(*parsed, name, fields, parameter);
    }
    if (chosen.kind == Proc::EffectKind::TwoInput) {
        if (furtherFiles.empty())
            throw WrongCall(name + " works on two pictures; " + name + ":input=FILE names the second");
        if (furtherFiles.size() > 1) throw WrongCall(name + " works on two pictures; input is given twice");
    }
    return parsed;
}

intrusive_ptr<Proc::IEffect> EffectStep::Make() const {
    intrusive_ptr<Proc::IEffect> effect = factory->CreateEffect(chosen.classId, chosen.implName);
    effect->SetProgressController(controller);
    effect->SetSettings(*settings);
    return effect;
}

StepOutcome EffectStep::Run(Piece piece) {
    intrusive_ptr<Proc::IEffect> const effect = Make();
    StepOutcome outcome;
    // The typed entries take our only handle, so that an effect that replaces the picture can drop the old one at once.
    if (auto* const one = dynamic_cast<Proc::IOneInputEffect*>(effect.get()))
        outcome.pieces = RunOnOne(*one, std::move(piece));
    else if (auto* const two = dynamic_cast<Proc::ITwoInputEffect*>(effect.get()))
        outcome.pieces = RunOnTwo(*two, std::move(piece));
    else
        outcome.pieces = RunOnMany(*effect, piece);
    outcome.results = FindResults(effect->GetSettingsBase());
    Core::Property const run = effect->GetStatistic();
    if (Core::Property const* const warning = run.FindChild(Proc::WARNING_NODE)) outcome.warning = warning->GetValue();
    Core::AddStatistics(statistic, run);
    return outcome;
}

std::vector<Piece> EffectStep::RunOnOne(Proc::IOneInputEffect& one, Piece piece) const {
    Proc::FrameFormat const before = piece.picture->GetFrameFormat();
    one.ProcessData(piece.picture);
    if (!piece.picture) throw NoPicture();
    // The host's own tools, such as resizing and padding, give just the size that they are asked for.
    if (chosen.implName != Proc::ImplNames::DEFAULT) CutBack(Proc::AsVideo(piece.picture), before);
    return {piece};
}

std::vector<Piece> EffectStep::RunOnTwo(Proc::ITwoInputEffect& two, Piece piece) const {
    two.ProcessData(piece.picture, furtherInputs.front()->MakeCopy(Proc::CopyMode::Value));
    if (!piece.picture) throw NoPicture();
    return {piece};
}

/// An effect on any number of pictures gives one, or puts several into the vector of its inputs.
std::vector<Piece> EffectStep::RunOnMany(Proc::IEffect& many, Piece const& piece) const {
    if (settings->IsEmpty()) return {piece};
    std::vector<Proc::DataHandle> pictures{piece.picture};
    for (Proc::VideoHandle const& input : furtherInputs)
        pictures.push_back(input->MakeCopy(Proc::CopyMode::Value)); // Kept as it is for the next photograph.
    if (Proc::DataHandle const result = many.ProcessData(pictures)) return {{result, piece.place}};
    if (pictures.empty()) throw NoPicture();

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

std::vector<EffectResult> EffectStep::FindResults(Proc::Settings const& after) const {
    std::vector<EffectResult> results;
    if (after.IsEmpty()) return results; // Nothing was looked at.
    for (Proc::SettingsField const& field : fields)
        if (field.isOutput) results.push_back({&field, field.print(after)});
    return results;
}

Failure EffectStep::NoPicture() const { return {ExitCode::OutputFailed, name + " gives no picture for this input"}; }

} // namespace Velnor::Tool
