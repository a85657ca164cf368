#include "Tools/velnor/SmallPhoto.h"

#include "Core/Progress.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsResizer.h"
#include "Tools/velnor/EffectStep.h"
#include "Tools/velnor/StandardStreams.h"

#include <algorithm>
#include <utility>

namespace Velnor::Tool {

void ShrinkInside(Proc::DataHandle& picture, std::uint32_t side, Proc::IEffectFactory& factory) {
    Proc::FrameFormat const& frame = picture->GetFrameFormat();
    if (std::max(frame.width, frame.height) <= side) return;
    Proc::SettingsResizer settings;
    settings.SetMethod(Proc::SettingsResizer::AREA);
    settings.SetLongSide(side);
    auto const resizer = factory.CreateOneInputEffect(settings.CLASS_ID, Proc::ImplNames::DEFAULT);
    resizer->SetSettings(settings);
    resizer->ProcessData(picture);
}

SmallPhoto ReadSmallPhoto(std::string const& file, std::uint32_t side, EffectCatalogue const& catalogue,
                          Proc::ReadOptions reading) {
    reading.enoughSide = side;
    Proc::LoadedPicture loaded = ReadPhoto(file, *catalogue.GetHost().GetContext(), reading);
    SmallPhoto photo{std::move(loaded.picture), loaded.metadata};
    ShrinkInside(photo.picture, side, *catalogue.GetHost().GetFactory());
    return photo;
}

Proc::DataHandle RunEffects(SmallPhoto const& photo, std::vector<std::string> const& effects,
                            EffectCatalogue const& catalogue, Proc::ReadOptions const& reading) {
    auto const controller = Core::ProgressController::Create();
    std::vector<Piece> pieces;
    pieces.push_back({Proc::AsVideo(photo.picture).MakeCopy(Proc::CopyMode::Value), {}});
    for (std::string const& effect : effects) {
        EffectStep const step(ParseEffectArgument(effect), catalogue, reading);
        pieces = step.Run(std::move(pieces), photo.metadata.get(), controller).pieces;
    }
    return pieces.front().picture;
}

} // namespace Velnor::Tool
