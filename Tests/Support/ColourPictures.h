#pragma once

// Pictures of known colours for tests: bars and slopes, and what their differences tell.

#include "Tools/check/ColourPictures.h"

#include <sys/mman.h>
#include <unistd.h>

namespace Velnor::Proc::Testing {

using Check::Colour4;
using Check::FindSample;
using Check::Luma;
using Check::Paint;
using Check::ReadColour;
using Check::Sample;
using Check::SamplePlace;

constexpr std::uint32_t BAR_WIDTH = 16;

/// Upright bars of full, middle and weak saturation, each with another opacity.
inline VideoHandle MakeBars(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height) {
    static constexpr std::array<Colour4, 9> BARS{{{255, 255, 255, 255},
                                                  {230, 220, 20, 200},
                                                  {20, 200, 210, 128},
                                                  {10, 180, 30, 1},
                                                  {200, 30, 190, 0},
                                                  {210, 20, 30, 77},
                                                  {20, 30, 220, 254},
                                                  {120, 128, 140, 33},
                                                  {0, 0, 0, 90}}};
    return Paint(context, format, width, height,
                 [](std::uint32_t x, std::uint32_t) { return BARS[x / BAR_WIDTH % BARS.size()]; });
}

/// Far enough from the next bar for chroma of a quarter of the resolution.
inline bool IsInsideBar(std::uint32_t x, std::uint32_t) { return x % BAR_WIDTH >= 6 && x % BAR_WIDTH < 10; }

/// Colours that change by up to three levels a pixel, in another direction each.
inline VideoHandle MakeGradient(IEffectContext& context, PixFmt format, std::uint32_t width, std::uint32_t height) {
    return Paint(context, format, width, height, [&](std::uint32_t x, std::uint32_t y) {
        auto const slope = [](double at, double size) { return 30 + 190 * std::clamp(at / size, 0.0, 1.0); };
        return Colour4{std::round(slope(x, width)), std::round(slope(height - 1.0 * y, height)),
                       std::round(slope(width - 1.0 * x, width)), 255};
    });
}

/// How much redder than blue, on average, a picture is than another: a chroma shift of a horizontal slope shows here
/// with its sign, while roundings cancel out.
inline double MeanShift(IDataVideo const& first, IDataVideo const& second) {
    if (first.GetDescription().model == ColorModel::Grey || second.GetDescription().model == ColorModel::Grey) return 0;
    FrameFormat const frame = first.GetFrameFormat();
    double sum = 0;
    double count = 0;
    for (std::uint32_t y = 4; y + 4 < frame.height; ++y)
        for (std::uint32_t x = 4; x + 4 < frame.width; ++x, ++count) {
            Colour4 const a = ReadColour(first, x, y);
            Colour4 const b = ReadColour(second, x, y);
            sum += (a.red - a.blue) - (b.red - b.blue);
        }
    return sum / count;
}

/// A copy of a picture's planes, each of which ends exactly where readable memory ends.
class FencedPicture {
public:
    FencedPicture(IDataVideo const& picture, bool isBottomUp)
        : format(picture.GetPixFmt()), frame(picture.GetFrameFormat()) {
        auto const page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
        for (unsigned char i = 0; i < GetPlanesCount(picture); ++i) {
            ConstPlane const from = picture.GetPlane(i);
            std::uint64_t const bytes = from.GetWidth() * from.GetHeight();
            std::uint64_t const room = (bytes + page - 1) / page * page;
            void* const memory = mmap(nullptr, room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            mappings.push_back({memory, room + page});
            auto* const start = static_cast<unsigned char*>(memory) + room - bytes;
            MutablePlane const to(start, static_cast<std::int64_t>(from.GetWidth()), from.GetWidth(), from.GetHeight(),
                                  from.GetSampleBytes(), isBottomUp);
            CopyPlane(from, to);
            mprotect(static_cast<unsigned char*>(memory) + room, page, PROT_NONE);
            mprotect(memory, room, PROT_READ);
            planes.push_back(to);
        }
    }
    ~FencedPicture() {
        for (auto const& [memory, bytes] : mappings) munmap(memory, bytes);
    }
    FencedPicture(FencedPicture const&) = delete;
    FencedPicture& operator=(FencedPicture const&) = delete;

    VideoHandle Wrap(IEffectContext& context) const {
        VideoHandle result;
        context.WrapImage(&result, format, frame, planes, nullptr);
        return result;
    }

private:
    PixFmt format;
    FrameFormat frame;
    std::vector<std::pair<void*, std::uint64_t>> mappings;
    std::vector<ConstPlane> planes;
};

} // namespace Velnor::Proc::Testing
