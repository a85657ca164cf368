#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of the colour-space converter: the formats that the picture may come out in.
class VELNOR_API SettingsColorspaceConverter final : public SettingsOf<SettingsColorspaceConverter> {
    VELNOR_SETTINGS(SettingsColorspaceConverter, "Converts the picture to one of several pixel formats.")
    VELNOR_FIELD(std::vector<PixFmt>, Formats, {},
                 "accepted formats; the picture's own, else the one that loses least of it, the first among equals",
                 Example("rgb24,gray8"))
    VELNOR_FLAG(KeepExtras, true, "whether extra alpha and the time attributes go on to the result")
    VELNOR_SETTINGS_END

    SettingsColorspaceConverter(PixFmt format, bool keepExtras) : valueFormats{format}, valueKeepExtras(keepExtras) {}
    SettingsColorspaceConverter(std::vector<PixFmt> const& formats, bool keepExtras)
        : valueFormats(formats), valueKeepExtras(keepExtras) {}

    void AddPixFmt(PixFmt format) { valueFormats.push_back(format); }

    /// Without a format there is nothing to convert to.
    bool IsEmpty() const override { return Settings::IsEmpty() || valueFormats.empty(); }
};

} // namespace Velnor::Proc
