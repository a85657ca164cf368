#include "Tools/check/Pictures.h"

#include <algorithm>

namespace Velnor::Proc::Check {
namespace {

constexpr std::size_t MARGIN = 67;
constexpr std::int64_t GAP = 13;
constexpr unsigned char GUARD = 0x5a;

std::int64_t GuardedStride(ConstPlane const& plane) { return static_cast<std::int64_t>(plane.GetWidth()) + GAP; }

std::size_t GuardedSize(ConstPlane const& plane) {
    return static_cast<std::size_t>(GuardedStride(plane)) * plane.GetHeight() + MARGIN;
}

} // namespace

VideoHandle MakeNoise(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height,
                      std::uint32_t seed) {
    VideoHandle const picture = context.CreateImage(format, FrameFormat::Square(width, height));
    std::uint32_t state = seed * 2654435761U + 1;
    for (unsigned char plane = 0; plane < GetPlanesCount(*picture); ++plane) {
        MutablePlane const samples = picture->GetMutablePlane(plane);
        for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
            for (std::uint64_t x = 0; x < samples.GetWidth(); ++x) {
                state = state * 1664525U + 1013904223U;
                samples.GetRow(y)[x] = static_cast<unsigned char>(state >> 24);
            }
    }
    return picture;
}

Bytes Samples(IDataVideo const& picture) {
    Bytes bytes;
    for (unsigned char plane = 0; plane < GetPlanesCount(picture); ++plane) {
        ConstPlane const samples = picture.GetPlane(plane);
        for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
            bytes.insert(bytes.end(), samples.GetRow(y), samples.GetRow(y) + samples.GetWidth());
    }
    return bytes;
}

void PaintStrokes(MutablePlane const& strokes) {
    constexpr unsigned char OBJECT = 255;
    constexpr unsigned char BACKGROUND = 128;
    std::fill_n(strokes.GetRow(0), strokes.GetWidth(), OBJECT);
    std::fill_n(strokes.GetRow(strokes.GetHeight() - 1), strokes.GetWidth(), BACKGROUND);
}

std::string NameOf(PixFmt format, std::uint32_t width, std::uint32_t height) {
    return std::string(PixFmtDescription::Find(format)->name) + " " + std::to_string(width) + " x " +
           std::to_string(height);
}

GuardedPicture::GuardedPicture(IEffectContext& context, IDataVideo const& content) {
    std::size_t bytes = MARGIN;
    for (unsigned char i = 0; i < GetPlanesCount(content); ++i) bytes += GuardedSize(content.GetPlane(i));
    memory.assign(bytes, GUARD);
    std::vector<ConstPlane> planes;
    std::size_t at = MARGIN;
    for (unsigned char i = 0; i < GetPlanesCount(content); ++i) {
        ConstPlane const source = content.GetPlane(i);
        MutablePlane const target(memory.data() + at, GuardedStride(source), source.GetWidth(), source.GetHeight(),
                                  source.GetSampleBytes());
        CopyPlane(source, target);
        planes.emplace_back(target);
        at += GuardedSize(source);
    }
    original = memory;
    context.WrapImage(&picture, content.GetPixFmt(), content.GetFrameFormat(), planes, nullptr);
}

Sight::Sight(DataHandle const& data) : object(data.get()) {
    if (!data) return;
    IDataVideo const& picture = AsVideo(ConstDataHandle(data));
    id = picture.GetId();
    format = picture.GetPixFmt();
    rectangle = picture.GetRectangle();
    attributes = {picture.GetTimeStamp(), picture.GetDuration()};
    for (unsigned char i = 0; i < GetPlanesCount(picture); ++i) Add(picture.GetPlane(i));
    for (unsigned char i = 0; i < 2; ++i)
        if (ConstPlane const alpha = picture.GetExtraAlpha(i); !alpha.IsEmpty()) Add(alpha);
}

void Sight::Add(ConstPlane const& plane) {
    bytes.insert(bytes.end(), plane.GetData(),
                 plane.GetData() + plane.GetStride() * static_cast<std::int64_t>(plane.GetHeight()));
}

std::vector<Sight> SeeAll(std::vector<DataHandle> const& pictures) {
    std::vector<Sight> sights;
    for (DataHandle const& picture : pictures) sights.emplace_back(picture);
    return sights;
}

} // namespace Velnor::Proc::Check
