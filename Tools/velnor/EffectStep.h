#pragma once

#include "Core/Progress.h"
#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Tools/velnor/EffectArgument.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/PickedColor.h"
#include "Tools/velnor/Pieces.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// A value that an effect found out about a picture.
struct EffectResult {
    Proc::SettingsField const* field = nullptr;
    std::string text;
};

/// What a run of an effect gave.
struct StepOutcome {
    std::vector<Piece> pieces;
    std::vector<EffectResult> results; ///< In order of declaration; none of an effect that is switched off.
    std::string warning;               ///< That the effect has about the result; mostly empty.
    bool isUnchanged = false;          ///< The picture is as it was, though the effect is there to change it.
    bool isMadeOpaque = false;         ///< The picture has lost the transparency that it had.
};

/// One effect of the chain: what was typed for it is understood once, with the further pictures that it names. Each run
/// is one of a fresh effect, since effects keep things from one picture to the next, as for the frames of a film, and
/// no photograph may show in another one.
class EffectStep {
public:
    /// Throws Failure (wrong call) for an unknown effect, implementation or parameter and for a value that does not
    /// fit; what ReadPicture throws for the further pictures of an effect on several; what the effect throws when it
    /// cannot be made.
    EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue, Proc::ReadOptions const& reading);

    std::string const& GetName() const { return name; }

    /// Whether the effect makes one picture of all that there are: photographs, or the pieces of one. Any other works
    /// on one at a time, with its own further pictures.
    bool Joins() const;

    /// Whether the effect makes several pictures of one.
    bool Cuts() const;

    /// What the effect makes of one piece, or of all when it joins them. Colours that were typed mean sRGB and are
    /// taken into the profile of the photograph, or of the first, whose metadata may be null. An extra alpha that the
    /// effect gives a picture without alpha becomes the picture's own, since files and other effects know no other.
    /// Throws what the effect throws, and Failure (output) when it gives no picture. May be called by several threads
    /// at once. The controller tells how far it is and whether to stop.
    StepOutcome Run(std::vector<Piece> pieces, Proc::PictureMetadata const* metadata,
                    intrusive_ptr<Core::IProgressController> const& controller) const;

    /// Whether the effect leaves every picture as it is, with these parameters: it is tried on one that shows all sorts
    /// of things.
    bool ChangesNothing() const;

    bool HasResults() const;             ///< Whether it is one that finds something out.
    Core::Property GetStatistic() const; ///< Of all runs together.

    /// Bytes that a run holds at its height for each pixel of the photograph, the picture included.
    std::uint64_t GetBytesPerPixel() const { return bytesPerPixel; }

    std::vector<std::string> const& GetFiles() const { return files; } ///< Of the further pictures.

private:
    std::unique_ptr<Proc::Settings> MakeSettings(Proc::PictureMetadata const* metadata) const;
    intrusive_ptr<Proc::IEffect> Make(Proc::Settings const& own) const;
    void ReadFurtherInputs(Proc::ReadOptions const& reading);
    bool IsMask(std::size_t input) const;
    void RunOnOne(Proc::IOneInputEffect& one, Proc::DataHandle& picture, StepOutcome& outcome) const;
    void RunWithCare(Proc::IOneInputEffect& one, Proc::DataHandle& picture, StepOutcome& outcome) const;
    void RunOnTwo(Proc::ITwoInputEffect& two, Proc::DataHandle& picture, StepOutcome& outcome) const;
    std::vector<Piece> RunOnMany(Proc::IEffect& many, std::vector<Piece> const& pieces) const;
    std::vector<EffectResult> FindResults(Proc::Settings const& after) const;
    Failure NoPicture() const;
    void PickColors(Proc::Settings& own, Proc::IDataVideo const& picture, StepOutcome& outcome) const;

    std::string const name;
    Proc::FactoryHandle const factory;
    Proc::ContextHandle const context;
    Proc::RegisteredEffect chosen;
    std::vector<Proc::PictureRole> roles; ///< Of its pictures, where it says so.
    std::vector<Proc::SettingsField> fields;
    std::vector<Proc::SettingsField> typedColors; ///< The fields with colours that were typed.
    std::optional<PickedPlace> pickedPlace;       ///< Where in the picture its reference is to be read.
    std::unique_ptr<Proc::Settings const> settings;
    std::vector<Proc::DataHandle> furtherInputs; ///< One for an effect on two pictures.
    std::vector<std::string> files;
    std::uint64_t bytesPerPixel = 0;
    mutable std::mutex mutex; ///< Guards what follows.
    mutable Core::Property statistic{""};
};

} // namespace Velnor::Tool
