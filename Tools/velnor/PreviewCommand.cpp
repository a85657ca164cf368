#include "Tools/velnor/Failure.h"
#include "Tools/velnor/LookCommands.h"
#include "Tools/velnor/SmallPhoto.h"

namespace Velnor::Tool {

std::string DrawPreview(PreviewOptions const& options) {
    constexpr std::uint32_t SIDE = 800; // More than a terminal shows, and a sixth of a photograph's or less.
    if (options.photo.empty()) throw WrongCall("preview: no photograph is given");
    TerminalSize size = GetTerminalSize();
    if (options.columns > 0) size = {options.columns, options.columns};
    EffectCatalogue const catalogue(options.plugins);
    Proc::ReadOptions const reading = options.files.ForReading();
    SmallPhoto const photo = ReadSmallPhoto(options.photo, SIDE, catalogue, reading);
    return DrawForTerminal(RunEffects(photo, options.effects, catalogue, reading), size, options.form,
                           *catalogue.GetHost().GetFactory());
}

} // namespace Velnor::Tool
