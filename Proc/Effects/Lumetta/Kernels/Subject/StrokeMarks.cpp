#include "Proc/Effects/Lumetta/Kernels/Subject/StrokeMarks.h"

#include <algorithm>
#include <span>

namespace Velnor::Proc::Kernels {

bool Contains(ConstPlane const& strokes, unsigned char value) {
    for (std::uint64_t y = 0; y < strokes.GetHeight(); ++y) {
        std::span const row(strokes.GetRow(y), strokes.GetWidth());
        if (std::ranges::find(row, value) != row.end()) return true;
    }
    return false;
}

void TranslateStrokes(MutablePlane const& strokes, unsigned char subject, unsigned char background) {
    for (std::uint64_t y = 0; y < strokes.GetHeight(); ++y)
        for (unsigned char& stroke : std::span(strokes.GetRow(y), strokes.GetWidth()))
            stroke = stroke == subject ? ON_SUBJECT : stroke == background ? ON_BACKGROUND : 0;
}

void ShrinkStrokes(ConstPlane const& large, MutablePlane const& small) {
    for (std::uint64_t y = 0; y < large.GetHeight(); ++y) {
        unsigned char const* const from = large.GetRow(y);
        unsigned char* const to = small.GetRow(y * small.GetHeight() / large.GetHeight());
        for (std::uint64_t x = 0; x < large.GetWidth(); ++x)
            if (from[x] != 0) to[x * small.GetWidth() / large.GetWidth()] = from[x];
    }
}

void PaintMarks(std::vector<Stroke> const& marks, std::size_t width, MutablePlane const& strokes) {
    std::size_t const height = marks.size() / width;
    for (std::uint64_t y = 0; y < strokes.GetHeight(); ++y) {
        Stroke const* const row = marks.data() + y * height / strokes.GetHeight() * width;
        for (std::uint64_t x = 0; x < strokes.GetWidth(); ++x) {
            Stroke const mark = row[x * width / strokes.GetWidth()];
            strokes.GetRow(y)[x] = mark == Stroke::None ? 0 : mark == Stroke::Subject ? ON_SUBJECT : ON_BACKGROUND;
        }
    }
}

void BindStrokes(ConstPlane const& strokes, MutablePlane const& mask) {
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x)
            if (unsigned char const stroke = strokes.GetRow(y)[x]; stroke != 0)
                mask.GetRow(y)[x] = stroke == ON_SUBJECT ? 255 : 0;
}

} // namespace Velnor::Proc::Kernels
