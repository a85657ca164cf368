#pragma once

#include "Core/Progress.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Failure.h"

#include <memory>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// A value that an effect found out about a picture.
struct EffectResult {
    Proc::SettingsField const* field = nullptr;
    std::string text;
};

/// Where a piece of a photograph begins, in pixels of the photograph as it was when it was cut up.
struct Place {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    friend bool operator==(Place const&, Place const&) = default;
};

/// A photograph on its way through the effects, or one of its pieces after an effect that cuts it up.
struct Piece {
    Proc::DataHandle picture;
    Place place;
};

/// What a run of an effect gave.
struct StepOutcome {
    std::vector<Piece> pieces;
    std::vector<EffectResult> results; ///< In order of declaration; none of an effect that is switched off.
    std::string warning;               ///< That the effect has about the result; mostly empty.
};

/// One effect of the chain: what was typed for it is understood once, with the further pictures that it names. Each run
/// is one of a fresh effect, since effects keep things from one picture to the next, as for the frames of a film, and
/// no photograph may show in another one.
class EffectStep {
public:
    /// Throws Failure (wrong call) for an unknown effect, implementation or parameter and for a value that does not
    /// fit; what ReadPicture throws for the further pictures of an effect on several; what the effect throws when it
    /// cannot be made.
    EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue, Proc::ReadOptions const& reading,
               intrusive_ptr<Core::IProgressController> const& progress);

    std::string const& GetName() const { return name; }

    /// What the effect makes of the piece: another one, or several. Throws what the effect throws, and Failure (output)
    /// when it gives no picture.
    StepOutcome Run(Piece piece);

    bool HasResults() const;                                         ///< Whether it is one that finds something out.
    Core::Property const& GetStatistic() const { return statistic; } ///< Of all runs together.

private:
    std::unique_ptr<Proc::Settings> Parse(EffectArgument const& argument, Proc::SettingsType const& type);
    intrusive_ptr<Proc::IEffect> Make() const;
    std::vector<Piece> RunOnOne(Proc::IOneInputEffect& one, Piece piece) const;
    std::vector<Piece> RunOnTwo(Proc::ITwoInputEffect& two, Piece piece) const;
    std::vector<Piece> RunOnMany(Proc::IEffect& many, Piece const& piece) const;
    std::vector<EffectResult> FindResults(Proc::Settings const& after) const;
    Failure NoPicture() const;

    std::string const name;
    Proc::FactoryHandle const factory;
    intrusive_ptr<Core::IProgressController> const controller;
    Proc::RegisteredEffect chosen;
    std::vector<Proc::SettingsField> fields;
    std::vector<std::string> furtherFiles; ///< One for an effect on two pictures.
    std::unique_ptr<Proc::Settings const> settings;
    std::vector<Proc::VideoHandle> furtherInputs; ///< Of those files.
    Core::Property statistic{""};
};

} // namespace Velnor::Tool
