#pragma once

#include "Core/Export.h"

#include <span>
#include <string_view>

namespace Velnor::Proc {

/// What helps a person to find an effect and to try it, beyond the parameters that its settings class declares. Lists,
/// help, examples and the reference pages are made from it.
struct SettingsGuide {
    std::string_view classId;
    std::string_view family; ///< Under which heading the effect is listed.

    /// What the pictures are that the effect takes beside the photograph; empty where it takes none.
    std::string_view furtherPictures = {};
    std::string_view furtherExample = {}; ///< File of such a picture, as examples call it.

    /// Parameters for an example, as they are typed, where those of the fields' own examples do not show the effect.
    std::string_view parameters = {};
    std::string_view photo = "photo.jpg"; ///< The photograph of examples; another where not any one will do.
};

/// The guide to the effect of a settings class; for a class of another library one that says "Other effects" and no
/// more.
VELNOR_API SettingsGuide const& FindGuide(std::string_view classId);

/// All guides of this library, those of a family together, in the order in which families are listed.
VELNOR_API std::span<SettingsGuide const> GetGuides();

} // namespace Velnor::Proc
