#include "Proc/Effects/General/FormatChoice.h"

#include <algorithm>
#include <optional>

namespace Velnor::Proc {
namespace {

constexpr int PALETTE_LOSS = 8;
constexpr int GREY_LOSS = 9;

int ChromaLoss(PixFmtDescription const& source, PixFmtDescription const& target) {
    if (source.model == ColorModel::Grey || source.format == target.format) return 0;
    if (target.model == ColorModel::Grey) return GREY_LOSS;
    if (target.model == ColorModel::Palette) return PALETTE_LOSS;
    return std::max(0, target.chromaShiftX - source.chromaShiftX) +
           std::max(0, target.chromaShiftY - source.chromaShiftY);
}

} // namespace

FormatLoss GetFormatLoss(PixFmtDescription const& source, PixFmtDescription const& target) {
    FormatLoss loss;
    loss.alpha = source.hasAlpha && !target.hasAlpha;
    loss.chroma = ChromaLoss(source, target);
    bool const toLuma = target.model == ColorModel::Luma || target.model == ColorModel::Grey;
    loss.matrix = source.model != ColorModel::Grey && (source.model == ColorModel::Luma) != toLuma;
    return loss;
}

PixFmt ChooseFormat(PixFmt source, std::span<PixFmt const> accepted) {
    PixFmtDescription const* const from = PixFmtDescription::Find(source);
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
