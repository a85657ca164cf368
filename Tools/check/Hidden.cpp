// Whether the colours of pixels that nobody sees show anywhere: two pictures that differ in them alone must give two
// results that look alike.

#include "Tools/check/ColourPictures.h"
#include "Tools/check/Promises.h"

#include <array>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

constexpr std::uint32_t WIDTH = 48;
constexpr std::uint32_t HEIGHT = 36;

using HiddenColour = Colour4 (*)(std::uint32_t x, std::uint32_t y);

Colour4 OneGrey(std::uint32_t, std::uint32_t) { return {90, 110, 130, 0}; }

Colour4 Dazzle(std::uint32_t x, std::uint32_t y) { return {(x + y) % 3 * 127.0, 255, (x ^ y) % 4 * 85.0, 0}; }

/// Blocks that are clear, seen through and opaque; what is hidden in the clear ones is told by `hidden`.
VideoHandle MakeBlocks(IEffectContext& context, PixFmt format, HiddenColour hidden) {
    constexpr std::array<double, 7> OPACITIES{0, 255, 120, 255, 255, 0, 255};
    std::uint32_t const block = format == PixFmt::PAL8 ? 4 : 1; // Few enough colours for a palette.
    return Paint(context, format, WIDTH, HEIGHT, [&](std::uint32_t x, std::uint32_t y) {
        double const opacity = OPACITIES[(x / 4 * 5 + y / 4 * 3 + x / 16) % OPACITIES.size()];
        x = x / block * block;
        y = y / block * block;
        Colour4 colour{40.0 + 3 * x + 7 * (y % 3), 30.0 + 5 * y + 9 * (x % 3), 200.0 - 3 * x + 11 * ((x + y) % 2), 0};
        if (opacity == 0) colour = hidden(x, y);
        colour.alpha = opacity;
        return colour;
    });
}

/// One picture, or two: a mask, or a photograph whose hidden colours are always the same. Where two pictures of a kind
/// are blended, neither may show what it hides.
std::vector<DataHandle> MakePair(Subject const& subject, VideoHandle const& picture, VideoHandle const& other) {
    std::vector<DataHandle> inputs = subject.MakeInputs(PixFmt::GRAY8, WIDTH, HEIGHT);
    if (subject.GetEffect().kind == EffectKind::VarInput) inputs.resize(1);
    inputs[0] = picture->MakeCopy(CopyMode::Value);
    std::vector<PictureRole> const& roles = subject.GetType().pictures;
    bool const takesMask = roles.size() > 1 && roles[1] == PictureRole::Mask;
    bool const isBlend = subject.GetName().find("blend") != std::string::npos;
    if (inputs.size() > 1 && !takesMask) inputs[1] = (isBlend ? picture : other)->MakeCopy(CopyMode::Value);
    return inputs;
}

VideoHandle Show(Subject const& subject, Settings const& settings, std::vector<DataHandle> inputs, Journal& journal) {
    Outcome const outcome = Try(*subject.Make(settings), std::move(inputs), journal);
    if (outcome.results.empty() || !outcome.results.front()) return nullptr;
    return VideoHandle(&AsVideo(outcome.results.front()));
}

bool IsClear(IDataVideo const& picture, std::uint32_t x, std::uint32_t y) {
    return picture.GetDescription().hasAlpha && ReadColour(picture, x, y).alpha == 0;
}

/// Pixels that are clear in the source may keep what they hide, and so may those that are clear in both results.
bool LookAlike(IDataVideo const& one, IDataVideo const& other, IDataVideo const& source) {
    FrameFormat const frame = one.GetFrameFormat();
    bool const isInPlace = frame == source.GetFrameFormat();
    for (std::uint32_t y = 0; y < frame.height; ++y)
        for (std::uint32_t x = 0; x < frame.width; ++x) {
            if ((isInPlace && IsClear(source, x, y)) || (IsClear(one, x, y) && IsClear(other, x, y))) continue;
            if (ReadColour(one, x, y) != ReadColour(other, x, y)) return false;
        }
    return true;
}

} // namespace

void CheckHiddenColours(Subject const& subject, Journal& journal) {
    for (auto const& settings : {subject.GetType().create(), subject.MakeTypicalSettings()})
        for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
            if (!format.hasAlpha) continue;
            journal.Begin(NameOf(format.format, WIDTH, HEIGHT));
            VideoHandle const source = MakeBlocks(subject.GetContext(), format.format, OneGrey);
            VideoHandle const twin = MakeBlocks(subject.GetContext(), format.format, Dazzle);
            VideoHandle const one = Show(subject, *settings, MakePair(subject, source, source), journal);
            VideoHandle const other = Show(subject, *settings, MakePair(subject, twin, source), journal);
            bool const areAlike =
                one == nullptr || other == nullptr
                    ? one == other
                    : one->GetFrameFormat() == other->GetFrameFormat() && LookAlike(*one, *other, *source);
            journal.Require(areAlike, "colours of clear pixels show in pixels that are seen");
        }
}

} // namespace Velnor::Proc::Check
