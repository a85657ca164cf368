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

/// One effect of the chain, made and configured once for all photographs.
class EffectStep {
public:
    /// Throws Failure (wrong call) for an unknown effect, implementation or parameter and for a value that does not
    /// fit; what ReadPicture throws for the further pictures of an effect on several.
    EffectStep(EffectArgument const& argument, EffectCatalogue const& catalogue, Proc::ReadOptions const& reading,
               intrusive_ptr<Core::IProgressController> const& progress);

    std::string const& GetName() const { return name; }

    /// What the effect makes of the piece: another one, or several. Throws what the effect throws, and Failure (output)
    /// when it gives no picture.
    std::vector<Piece> Run(Piece piece);

    bool HasResults() const;                      ///< Whether the effect is of those that find something out.
    std::vector<EffectResult> GetResults() const; ///< Of the last run, in order of declaration.
    std::string GetWarning();                     ///< That the effect has about its last run; mostly empty.
    Core::Property GetStatistic() { return effect->GetStatistic(); }

private:
    void Configure(EffectArgument const& argument, Proc::SettingsType const& type, Proc::ReadOptions const& reading,
                   Proc::IEffectContext& context);
    void RunOnOne(Proc::IOneInputEffect& one, Proc::DataHandle& picture) const;
    std::vector<Piece> RunOnMany(Piece piece);

    std::string name;
    Proc::EffectKind kind = Proc::EffectKind::OneInput;
    bool keepsSize = true; ///< Whether a picture that came out a column or a row larger is cut back.
    std::vector<Proc::SettingsField> fields;
    intrusive_ptr<Proc::IEffect> effect;
    std::vector<Proc::VideoHandle> furtherInputs; ///< One for an effect on two pictures.
};

} // namespace Velnor::Tool
