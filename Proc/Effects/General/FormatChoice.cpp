#include "Proc/Effects/General/FormatChoice.h"

#include <algorithm>
#include <optional>

namespace Velnor::Proc {
namespace {

constexpr int PALETTE_LOSS = 8;
constexpr int GREY_LOSS = 9;

/// Halvings of the chroma resolution from one format to another; doublings are not subtracted.
int CountHalvings(PixFmtDescription const& from, PixFmtDescription const& to) {
    return std::max(0, to.chromaShiftX - from.chromaShiftX) + std::max(0, to.chromaShiftY - from.chromaShiftY);
}

int ChromaLoss(PixFmtDescription const& source, PixFmtDescription const& target) {
    if (source.model == ColorModel::Grey || source.format == target.format) return 0;
    if (target.model == ColorModel::Grey) return GREY_LOSS;
    if (target.model == ColorModel::Palette) return PALETTE_LOSS;
    return CountHalvings(source, target);
}

bool IsPackedRgb(PixFmtDescription const& format) { return format.model == ColorModel::Rgb && format.planesCount == 1; }

bool IsBlueFirst(PixFmtDescription const& format) {
    return IsPackedRgb(format) && format.components[2].offset < format.components[0].offset;
}

/// Whether the first format of red, green and blue in a list is one of blue, green and red.
bool AsksForBlueFirst(std::span<PixFmt const> accepted) {
    for (PixFmt const each : accepted)
        if (auto const* const format = PixFmtDescription::Find(each); format != nullptr && IsPackedRgb(*format))
            return IsBlueFirst(*format);
    return false;
}

} // namespace

FormatLoss GetFormatLoss(PixFmtDescription const& source, PixFmtDescription const& target) {
    FormatLoss loss;
    loss.alpha = source.hasAlpha && !target.hasAlpha;
    loss.chroma = ChromaLoss(source, target);
    loss.madeUp = CountHalvings(target, source);
    bool const toLuma = target.model == ColorModel::Luma || target.model == ColorModel::Grey;
    loss.matrix = source.model != ColorModel::Grey && (source.model == ColorModel::Luma) != toLuma;
    return loss;
}

PixFmt ChooseFormat(PixFmt source, std::span<PixFmt const> accepted) {
    PixFmtDescription const* const from = PixFmtDescription::Find(source);
    bool const isOrderWrong =
        from != nullptr && IsPackedRgb(*from) && !IsBlueFirst(*from) && AsksForBlueFirst(accepted);
    if (from != nullptr && !isOrderWrong && std::ranges::count(accepted, source) > 0) return source;
    PixFmt best = PixFmt::NONE;
    std::optional<FormatLoss> least;
    for (PixFmt const format : accepted) {
        PixFmtDescription const* const to = PixFmtDescription::Find(format);
        if (from == nullptr || to == nullptr) continue;
        FormatLoss const loss = GetFormatLoss(*from, *to);
        if (least && !(loss < *least)) continue;
        least = loss;
        best = format;
    }
    return best;
}

} // namespace Velnor::Proc
