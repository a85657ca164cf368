#pragma once

#include "Proc/Interfaces/SettingsFields.h"

namespace Velnor::Proc {

/// Settings of Stitcher.
class VELNOR_API SettingsEffectStitcher final : public SettingsOf<SettingsEffectStitcher> {
public:
    enum Mode : int {
        AUTO = 0,     ///< Patches when they carry places or a grid is set; else photographs.
        PATCHES = 1,  ///< Pieces of a picture, that go to their places.
        PANORAMA = 2, ///< Photographs that overlap by what they show.
    };

    VELNOR_SETTINGS(SettingsEffectStitcher,
                    "Joins overlapping photographs, or the patches of a picture, each fading into the next.")
    VELNOR_FIELD(Mode, Mode, AUTO,
                 "what the pictures are; auto takes them for patches when they carry places or when columns or an "
                 "overlap is set")
    VELNOR_FIELD(int, Width, 0, "width of the result of patches; 0 is all of it", Unit("pixels"),
                 Range(0, LARGEST_PICTURE_SIDE), AcceptsFrom(0))
    VELNOR_FIELD(int, Height, 0, "height of the result of patches; 0 is all of it", Unit("pixels"),
                 Range(0, LARGEST_PICTURE_SIDE), AcceptsFrom(0))
    VELNOR_FIELD(int, Columns, 0, "patches in a row, when they carry no place; 0 makes a square of them",
                 Range(0, 65536), AcceptsFrom(0))
    VELNOR_FIELD(int, OverlapX, 0, "how far such a patch reaches into the one to its right", Unit("pixels"),
                 Range(-4096, 4095))
    VELNOR_FIELD(int, OverlapY, 0, "how far such a patch reaches into the one below it", Unit("pixels"),
                 Range(-4096, 4095))
    VELNOR_SETTINGS_END
};

template <>
struct EnumNames<SettingsEffectStitcher::Mode> {
    using S = SettingsEffectStitcher;
    static constexpr std::array<EnumName<S::Mode>, 3> VALUES{
        {{S::AUTO, "auto"}, {S::PATCHES, "patches"}, {S::PANORAMA, "panorama"}}};
};

} // namespace Velnor::Proc
