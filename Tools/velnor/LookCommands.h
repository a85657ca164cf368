#pragma once

#include "Tools/velnor/FileOptions.h"
#include "Tools/velnor/TerminalPicture.h"

#include <string>
#include <vector>

namespace Velnor::Tool {

/// What `velnor preview` is asked to do.
struct PreviewOptions {
    std::string photo;
    std::vector<std::string> effects; ///< As typed.
    std::vector<std::string> plugins;
    FileOptions files;
    TerminalForm form = TerminalForm::Auto;
    int columns = 0; ///< 0: those of the terminal.
};

/// The photograph through the effects, as text for the terminal. Throws Failure and what effects throw.
std::string DrawPreview(PreviewOptions const& options);

/// What `velnor gallery` is asked to do.
struct GalleryOptions {
    std::string photo;
    std::vector<std::string> effects; ///< Names of those to show; none for all, and the recipes.
    std::vector<std::string> plugins;
    std::string output;
    FileOptions files;
};

/// Writes the page. An effect that fails has the reason in the place of its picture. Throws Failure.
void WriteGallery(GalleryOptions const& options);

} // namespace Velnor::Tool
