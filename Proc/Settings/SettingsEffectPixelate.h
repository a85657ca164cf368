#pragma once

#include "Proc/Settings/SettingsResizer.h"

namespace Velnor::Proc {

/// Settings of Pixelate.
class VELNOR_API SettingsEffectPixelate final : public SettingsOf<SettingsEffectPixelate> {
    VELNOR_SETTINGS(SettingsEffectPixelate, "Turns the picture into a mosaic of flat blocks.")
    VELNOR_FIELD(double, Strength, 80.0, "coarseness: 0 keeps the picture, 100 leaves 32 blocks on its shorter side",
                 Unit("%"), Range(0, 100))
    VELNOR_FIELD(SettingsResizer::ResizeMethods, MethodDownscale, SettingsResizer::AREA,
                 "how the colour of a block is made from its pixels", AcceptsAnything())
    VELNOR_FIELD(SettingsResizer::ResizeMethods, MethodUpscale, SettingsResizer::POINT,
                 "how the blocks are drawn: point gives hard edges, bilinear soft ones", AcceptsAnything())
    VELNOR_SETTINGS_END
};

} // namespace Velnor::Proc
