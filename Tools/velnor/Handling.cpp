#include "Tools/velnor/Handling.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Tools/velnor/Conversion.h"
#include "Tools/velnor/Masks.h"
#include "Tools/velnor/PictureOutput.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Velnor::Tool {
namespace {

constexpr std::uint64_t FACTOR = 0x9e3779b97f4a7c15; // The golden ratio, odd: multiplying loses no bit.

std::uint64_t Mix(std::uint64_t digest, std::uint64_t next) {
    std::uint64_t const mixed = (digest ^ next) * FACTOR;
    return mixed ^ (mixed >> 32);
}

/// Four sums side by side, since each step of one waits for the step before.
std::uint64_t MixRow(std::uint64_t digest, unsigned char const* row, std::uint64_t bytes) {
    std::uint64_t lanes[4] = {digest, digest + 1, digest + 2, digest + 3};
    std::uint64_t words[4] = {};
    for (; bytes >= sizeof words; bytes -= sizeof words, row += sizeof words) {
        std::memcpy(words, row, sizeof words);
        for (int i = 0; i < 4; ++i) lanes[i] = Mix(lanes[i], words[i]);
    }
    std::fill(std::begin(words), std::end(words), 0);
    std::memcpy(words, row, static_cast<std::size_t>(bytes));
    for (int i = 0; i < 4; ++i) digest = Mix(digest, Mix(lanes[i], words[i]));
    return digest;
}

bool IsGrey(Proc::ConstPlane const& pixels, std::uint64_t bytes) {
    for (std::uint64_t y = 0; y < pixels.GetHeight(); ++y) {
        unsigned char const* const row = pixels.GetRow(y);
        for (std::uint64_t x = 0; x + 2 < pixels.GetWidth(); x += bytes)
            if (row[x] != row[x + 1] || row[x] != row[x + 2]) return false;
    }
    return true;
}

} // namespace

std::uint64_t Digest(Proc::IDataVideo const& picture) {
    constexpr std::uint64_t STEP = 4; // A quarter of the rows tells as much, for a quarter of the time.
    Proc::FrameFormat const& frame = picture.GetFrameFormat();
    std::uint64_t digest = Mix(frame.width, static_cast<std::uint64_t>(picture.GetPixFmt()));
    for (unsigned char index = 0; index < GetPlanesCount(picture); ++index) {
        Proc::ConstPlane const plane = picture.GetPlane(index);
        for (std::uint64_t y = 0; y < plane.GetHeight(); y += STEP)
            digest = MixRow(digest, plane.GetRow(y), plane.GetWidth());
    }
    return digest;
}

Handling::Handling(Proc::DataHandle& picture, Proc::IEffectFactory& effectFactory) : factory(effectFactory) {
    Proc::IDataVideo const& video = Proc::AsVideo(Proc::ConstDataHandle(picture));
    if (!IsOpaque(video)) {
        alpha = video.MakeCopy(Proc::CopyMode::Value);
        factory.CreateOneInputEffect(Proc::SettingsEffectAlphaExtractor::CLASS_ID, Proc::ImplNames::DEFAULT)
            ->ProcessData(alpha);
    }
    wasGrey = picture->GetDescription().model == ColorModel::Grey;
    if (wasGrey) Convert(picture, {picture->GetDescription().hasAlpha ? PixFmt::RGBA : PixFmt::RGB24}, factory);
}

bool Handling::TakeBack(Proc::DataHandle& picture) const {
    bool const isMask = picture->GetDescription().model == ColorModel::Grey;
    bool const isLost = alpha && !isMask && IsOpaque(Proc::AsVideo(picture)) && !PutBackAlpha(picture);
    if (wasGrey && !isMask && picture->GetPixFmt() != PixFmt::PAL8) TakeBackGrey(picture);
    return isLost;
}

void Handling::TakeBackGrey(Proc::DataHandle& picture) const {
    bool const hasAlpha = picture->GetDescription().hasAlpha;
    Convert(picture, {hasAlpha ? PixFmt::RGBA : PixFmt::RGB24}, factory);
    if (IsGrey(Proc::AsVideo(picture).GetPlane(0), hasAlpha ? 4 : 3))
        Convert(picture, {hasAlpha ? PixFmt::YA8 : PixFmt::GRAY8}, factory);
}

bool Handling::PutBackAlpha(Proc::DataHandle& picture) const {
    Proc::FrameFormat const& size = picture->GetFrameFormat();
    Proc::FrameFormat const& alphaSize = alpha->GetFrameFormat();
    if (!IsSameSize(size, alphaSize)) return false;
    WriteAlpha(picture, Proc::AsVideo(alpha).GetPlane(0), factory);
    return true;
}

Proc::DataHandle MakeSpecimen(Proc::IEffectContext& context) {
    constexpr std::uint32_t SIDE = 64;
    Proc::VideoHandle const picture = context.CreateImage(PixFmt::RGB24, Proc::FrameFormat::Square(SIDE, SIDE));
    Proc::MutablePlane const plane = picture->GetMutablePlane(0);
    std::uint64_t noise = 1;
    for (std::uint64_t y = 0; y < SIDE; ++y)
        for (std::uint64_t x = 0; x < SIDE * 3; ++x) {
            noise = Mix(noise, x);
            bool const isFlat = y < SIDE / 2; // Ramps of colour above, noise below.
            plane.GetRow(y)[x] = static_cast<unsigned char>(isFlat ? x * (x % 3 + 1) / 3 : noise >> 56);
        }
    return picture;
}

} // namespace Velnor::Tool
