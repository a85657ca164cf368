#include "Tools/velnor/EffectStep.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/SettingsText.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Tools/velnor/EffectMemory.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Handling.h"
#include "Tools/velnor/Masks.h"
#include "Tools/velnor/StandardStreams.h"

#include <algorithm>
#include <iterator>

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

/// "at most 2 pictures", as refusals say it.
std::string DescribeMost(std::size_t pictures) {
    return pictures == 1 ? "one picture" : "at most " + std::to_string(pictures) + " pictures";
}

bool HoldsColors(Proc::SettingsField const& field) {
    return field.type == Proc::TextForm<Proc::Color>::TYPE || field.type == Proc::TextForm<Proc::GradientStops>::TYPE;
}

/// A printed value in which the colours, each from its # on, are those of the photograph.
std::string ToPhotosColors(std::string const& text, Proc::PictureMetadata const* metadata) {
    using Form = Proc::TextForm<Proc::Color>;
    std::string converted;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const end = text[at] == '#' ? std::min(text.find(',', at), text.size()) : at + 1;
        std::string const part = text.substr(at, end - at);
        converted += part[0] == '#' ? Form::Print(Proc::ToPhotosColor(Form::Parse(part), metadata)) : part;
        at = end;
    }
    return converted;
}

} // namespace

EffectStep::EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue,
                       Proc::ReadOptions const& reading)
    : name(argument.name), factory(catalogue.GetHost().GetFactory()), context(catalogue.GetHost().GetContext()) {
    CatalogueEntry const& entry = catalogue.Get(argument.name);
    chosen = GetImplementation(entry, argument.implementation);
    Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
    roles = type.pictures;
    fields = DescribeParameters(type, chosen.kind);
    std::unique_ptr<Proc::Settings> parsed = type.create();
    bytesPerPixel = GetEffectMemory(name, chosen.implName);
    for (EffectArgument::Parameter const& parameter : argument.parameters)
        if (parameter.key == INPUT_PARAMETER && std::ranges::count(fields, INPUT_PARAMETER, &Proc::SettingsField::name))
            files.push_back(parameter.value);
        else
            SetParameter(*parsed, name, fields, parameter);
    for (EffectArgument::Parameter const& parameter : argument.parameters)
        if (parameter.key == PLACE_PARAMETER && TakesPlace(type)) pickedPlace = ParsePickedPlace(parameter.value);
    if (pickedPlace && std::ranges::count(argument.parameters, REFERENCE_FIELD, &EffectArgument::Parameter::key) > 0)
        throw WrongCall(name + ": at and reference go one without the other");
    for (Proc::SettingsField const& field : fields)
        if (HoldsColors(field) && std::ranges::count(argument.parameters, field.name, &EffectArgument::Parameter::key))
            typedColors.push_back(field);
    settings = std::move(parsed);
    ReadFurtherInputs(reading);
    // Made here too, so that one that cannot be made is told before any work.
    statistic = Make(*settings)->GetStatistic();
}

void EffectStep::ReadFurtherInputs(Proc::ReadOptions const& reading) {
    if (chosen.kind == Proc::EffectKind::TwoInput) {
        if (files.empty()) throw WrongCall(name + " works on two pictures; " + name + ":input=FILE names the second");
        if (files.size() > 1) throw WrongCall(name + " works on two pictures; input is given twice");
    }
    if (!roles.empty() && files.size() >= roles.size() && !files.empty())
        throw WrongCall(name + " works on " + DescribeMost(roles.size()) + "; input is given " +
                        std::to_string(files.size()) + " times");
    for (std::string const& file : files) {
        Proc::DataHandle picture = ReadPhoto(file, *context, reading).picture;
        if (IsMask(1 + furtherInputs.size())) picture = MakeMask(std::move(picture), *factory);
        furtherInputs.push_back(std::move(picture));
    }
}

bool EffectStep::IsMask(std::size_t input) const {
    return input < roles.size() && roles[input] == Proc::PictureRole::Mask;
}

bool EffectStep::Joins() const {
    return chosen.kind == Proc::EffectKind::VarInput && roles.empty() && !settings->IsEmpty();
}

bool EffectStep::Cuts() const { return chosen.kind == Proc::EffectKind::VarInput && roles.size() == 1; }

std::unique_ptr<Proc::Settings> EffectStep::MakeSettings(Proc::PictureMetadata const* metadata) const {
    std::unique_ptr<Proc::Settings> own = settings->Clone();
    for (Proc::SettingsField const& field : typedColors)
        field.parseAny(*own, ToPhotosColors(field.print(*own), metadata));
    return own;
}

intrusive_ptr<Proc::IEffect> EffectStep::Make(Proc::Settings const& own) const {
    intrusive_ptr<Proc::IEffect> effect = factory->CreateEffect(chosen.classId, chosen.implName);
    effect->SetSettings(own);
    return effect;
}

/// The reference is among the colours of the picture itself.
void EffectStep::PickColors(Proc::Settings& own, Proc::IDataVideo const& picture, StepOutcome& outcome) const {
    auto const field = std::ranges::find(fields, REFERENCE_FIELD, &Proc::SettingsField::name);
    std::string const text = Proc::TextForm<Proc::Color>::Print(PickColor(picture, *pickedPlace, *factory));
    field->parseAny(own, text);
    outcome.results.push_back({&*field, text});
}

StepOutcome EffectStep::Run(std::vector<Piece> pieces, Proc::PictureMetadata const* metadata,
                            intrusive_ptr<Core::IProgressController> const& controller) const {
    StepOutcome outcome;
    Proc::DataHandle& picture = pieces.front().picture;
    if (IsMask(0)) picture = MakeMask(std::move(picture), *factory);
    std::unique_ptr<Proc::Settings> const own = MakeSettings(metadata);
    if (pickedPlace) PickColors(*own, Proc::AsVideo(picture), outcome);
    intrusive_ptr<Proc::IEffect> const effect = Make(*own);
    effect->SetProgressController(controller);
    // The typed entries take our only handle, so that an effect that replaces the picture can drop the old one at once.
    if (auto* const one = dynamic_cast<Proc::IOneInputEffect*>(effect.get()))
        RunOnOne(*one, picture, outcome);
    else if (auto* const two = dynamic_cast<Proc::ITwoInputEffect*>(effect.get()))
        RunOnTwo(*two, picture, outcome);
    else
        pieces = RunOnMany(*effect, pieces);
    for (Piece& piece : pieces) {
        if (!piece.picture) throw NoPicture();
        TakeExtraAlpha(piece.picture, *factory);
    }
    outcome.pieces = std::move(pieces);
    std::ranges::move(FindResults(effect->GetSettingsBase()), std::back_inserter(outcome.results));
    Core::Property const run = effect->GetStatistic();
    if (Core::Property const* const warning = run.FindChild(Proc::WARNING_NODE)) outcome.warning = warning->GetValue();
    std::lock_guard const lock(mutex);
    Core::AddStatistics(statistic, run);
    return outcome;
}

Core::Property EffectStep::GetStatistic() const {
    std::lock_guard const lock(mutex);
    return statistic;
}

void EffectStep::RunOnOne(Proc::IOneInputEffect& one, Proc::DataHandle& picture, StepOutcome& outcome) const {
    bool const mayStay = HasResults() || settings->IsBypassed();
    std::uint64_t const before = mayStay ? 0 : Digest(Proc::AsVideo(picture));
    // The host's own tools, such as resizing and padding, give just the size and the format that they are asked for.
    if (chosen.implName == Proc::ImplNames::DEFAULT || IsMask(0))
        one.ProcessData(picture);
    else
        RunWithCare(one, picture, outcome);
    outcome.isUnchanged = picture && !mayStay && Digest(Proc::AsVideo(picture)) == before;
}

void EffectStep::RunWithCare(Proc::IOneInputEffect& one, Proc::DataHandle& picture, StepOutcome& outcome) const {
    Proc::FrameFormat const before = picture->GetFrameFormat();
    Handling const handling(picture, *factory);
    one.ProcessData(picture);
    if (!picture) return;
    CutBack(Proc::AsVideo(picture), before);
    outcome.isMadeOpaque = handling.TakeBack(picture);
}

void EffectStep::RunOnTwo(Proc::ITwoInputEffect& two, Proc::DataHandle& picture, StepOutcome& outcome) const {
    Proc::DataHandle second = Proc::AsVideo(furtherInputs.front()).MakeCopy(Proc::CopyMode::Value);
    if (chosen.implName == Proc::ImplNames::DEFAULT || IsMask(1)) return two.ProcessData(picture, second);
    Handling const handling(picture, *factory);
    Handling const handlingOfSecond(second, *factory);
    two.ProcessData(picture, second);
    if (picture) outcome.isMadeOpaque = handling.TakeBack(picture);
}

/// An effect on any number of pictures gives one, or puts several into the vector of its inputs.
std::vector<Piece> EffectStep::RunOnMany(Proc::IEffect& many, std::vector<Piece> const& pieces) const {
    if (settings->IsEmpty()) return pieces;
    std::vector<Proc::DataHandle> pictures = PutInPlace(pieces, *context);
    for (Proc::DataHandle const& input : furtherInputs)
        pictures.push_back(Proc::AsVideo(input).MakeCopy(Proc::CopyMode::Value)); // Kept for the next photograph.
    Piece const& first = pieces.front();
    if (Proc::DataHandle const result = many.ProcessData(pictures))
        return {Joins() ? JoinPieces(pieces, result) : Piece{result, first.place, first.cut}};
    if (pictures.empty()) throw NoPicture();
    return CutPiece(first, pictures);
}

bool EffectStep::ChangesNothing() const {
    Proc::DataHandle specimen = MakeSpecimen(*context);
    std::uint64_t const before = Digest(Proc::AsVideo(specimen));
    intrusive_ptr<Proc::IEffect> const effect = Make(*settings);
    auto* const one = dynamic_cast<Proc::IOneInputEffect*>(effect.get());
    try {
        if (one != nullptr) one->ProcessData(specimen);
    } catch (Proc::ProcException const&) {
        return false;
    }
    return one != nullptr && specimen && Digest(Proc::AsVideo(specimen)) == before;
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
