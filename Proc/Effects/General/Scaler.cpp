#include "Proc/Effects/General/Scaler.h"

extern "C" {
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

constexpr std::size_t CONTEXTS_KEPT = 8;
constexpr std::int64_t OVERREAD = 256;   ///< Bytes; the largest seen is 63.
constexpr std::uint32_t CHROMA_ROWS = 4; ///< Slices begin at whole chroma rows of every format.
constexpr int QUALITY_FLAGS = SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

/// libswscale remarks on its own choice of code path for some sizes. That is nothing a user can act on, and failures
/// come back as error codes; other classes' messages go where they went by default.
void KeepQuiet(void* object, int level, char const* format, va_list arguments) {
    if (object != nullptr && *static_cast<AVClass const**>(object) == sws_get_class()) return;
    av_log_default_callback(object, level, format, arguments);
}

/// Formats are matched by name: the numbers differ between the generations of the library.
AVPixelFormat ToLibrary(PixFmt format) {
    PixFmtDescription const* const description = PixFmtDescription::Find(format);
    if (description == nullptr) return AV_PIX_FMT_NONE;
    std::string name(description->name);
    if (name == "gray8") name = "gray";
    if (name.starts_with("yuvj")) name.erase(3, 1); // Full range is said by the range, not by the format.
    return av_get_pix_fmt(name.c_str());
}

template <class Side>
AVPixelFormat ToLibrary(Side const& side) {
    return side.isWords ? AV_PIX_FMT_GRAY16 : ToLibrary(side.format);
}

/// Fast bilinear is plain bilinear: the library's own puts the first samples of source and target over one another
/// instead of their outer edges, which moves the picture by half a pixel.
int ToFlags(SettingsResizer::ResizeMethods method) {
    static constexpr std::array<int, 11> FLAGS{SWS_BILINEAR, SWS_BILINEAR, SWS_BICUBIC,  SWS_X,
                                               SWS_POINT,    SWS_AREA,     SWS_BICUBLIN, SWS_GAUSS,
                                               SWS_SINC,     SWS_LANCZOS,  SWS_SPLINE};
    return FLAGS[static_cast<std::size_t>(method)] | QUALITY_FLAGS;
}

std::string Describe(int format, int width, int height) {
    char const* const name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(format));
    return std::string(name == nullptr ? "unknown format" : name) + " " + SizeText(width, height);
}

template <class Side>
auto Pointers(Side const& side) {
    std::array<decltype(side.planes[0].GetData()), 4> pointers{};
    for (std::size_t i = 0; i < pointers.size(); ++i) pointers[i] = side.planes[i].GetData();
    return pointers;
}

template <class Side>
std::array<int, 4> Strides(Side const& side) {
    std::array<int, 4> strides{};
    for (std::size_t i = 0; i < strides.size(); ++i) strides[i] = static_cast<int>(side.planes[i].GetStride());
    return strides;
}

/// First of the rows that must not be read in place: so many stand below it that reading past the end of a row above
/// stays inside the picture.
std::uint32_t FirstTailRow(ScalerSource const& source, PixFmtDescription const& format) {
    std::int64_t rows = CHROMA_ROWS;
    for (std::size_t i = 0; i < format.planesCount; ++i) {
        std::int64_t const stride = source.planes[i].GetStride();
        if (stride <= 0) return 0;
        rows = std::max(rows, ((OVERREAD + stride - 1) / stride) << format.planes[i].shiftY);
    }
    return static_cast<std::uint32_t>(std::max<std::int64_t>(0, source.height - rows)) / CHROMA_ROWS * CHROMA_ROWS;
}

/// The mean of each across x down pixels of `parts` numbers.
template <class Number>
void WriteMeans(ConstPlane const& fine, std::uint64_t across, std::uint64_t down, std::uint64_t parts,
                MutablePlane const& target) {
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y)
        for (std::uint64_t i = 0; i < target.GetWidth() / sizeof(Number); ++i) {
            std::uint64_t sum = across * down / 2;
            for (std::uint64_t part = 0; part < across * down; ++part) {
                std::uint64_t const at = (i / parts * across + part % across) * parts + i % parts;
                Number number;
                std::memcpy(&number, fine.GetRow(y * down + part / across) + at * sizeof number, sizeof number);
                sum += number;
            }
            auto const mean = static_cast<Number>(sum / (across * down));
            std::memcpy(target.GetRow(y) + i * sizeof mean, &mean, sizeof mean);
        }
}

/// Keeps the bytes after each row of a target, into which libswscale writes whole registers, as they are.
class RowEnds {
public:
    explicit RowEnds(ScalerTarget const& scaled) : target(scaled) {
        VisitAll([this](unsigned char* at, std::size_t count) { kept.insert(kept.end(), at, at + count); });
    }
    ~RowEnds() {
        unsigned char const* from = kept.data();
        VisitAll([&](unsigned char* at, std::size_t count) {
            std::copy_n(from, count, at);
            from += count;
        });
    }
    RowEnds(RowEnds const&) = delete;
    RowEnds& operator=(RowEnds const&) = delete;

private:
    template <class Visit>
    void VisitAll(Visit const& visit) const {
        constexpr std::int64_t LONGEST = 64;
        for (MutablePlane const& plane : target.planes) {
            std::int64_t const gap = plane.GetStride() - static_cast<std::int64_t>(plane.GetWidth());
            for (std::uint64_t y = 0; gap > 0 && y < plane.GetHeight(); ++y)
                visit(plane.GetRow(y) + plane.GetWidth(), static_cast<std::size_t>(std::min(gap, LONGEST)));
        }
    }

    ScalerTarget const& target;
    std::vector<unsigned char> kept;
};

} // namespace

void Scaler::FreeContext::operator()(SwsContext* context) const { sws_freeContext(context); }

Scaler::Scaler() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(KeepQuiet); });
}

Scaler::~Scaler() = default;

std::uint32_t Scaler::GetLargestShrink(SettingsResizer::ResizeMethods method) {
    // 150 taps over the width of each method's kernel, in source pixels a target pixel.
    static constexpr std::array<std::uint32_t, 11> LARGEST{75, 75, 37, 18, 150, 150, 37, 18, 7, 25, 7};
    return LARGEST[static_cast<std::size_t>(method)];
}

Scaler::ContextPointer Scaler::MakeContext(Geometry const& geometry) {
    ContextPointer context(sws_alloc_context());
    if (!context) throw std::bad_alloc();
    auto const set = [&](char const* option, int value) { av_opt_set_int(context.get(), option, value, 0); };
    set("src_format", geometry.sourceFormat);
    set("srcw", geometry.sourceWidth);
    set("srch", geometry.sourceHeight);
    set("dst_format", geometry.targetFormat);
    set("dstw", geometry.targetWidth);
    set("dsth", geometry.targetHeight);
    set("sws_flags", geometry.flags);
    set("src_range", 1);
    set("dst_range", 1);
    if (sws_init_context(context.get(), nullptr, nullptr) < 0) return nullptr;
    // Says no for means without a matrix; there is nothing to set then.
    constexpr int ONE = 1 << 16;
    int const* const matrix = sws_getCoefficients(SWS_CS_ITU601);
    sws_setColorspaceDetails(context.get(), matrix, 1, matrix, 1, 0, ONE, ONE);
    return context;
}

SwsContext* Scaler::FindContext(Geometry const& geometry) {
    auto found = std::ranges::find(entries, geometry, &Entry::geometry);
    if (found == entries.end()) {
        ContextPointer context = MakeContext(geometry);
        if (!context) return nullptr;
        if (entries.size() == CONTEXTS_KEPT) entries.pop_back();
        found = entries.insert(entries.end(), Entry{geometry, std::move(context)});
    }
    std::rotate(entries.begin(), found, found + 1);
    return entries.front().context.get();
}

ScalerSource Scaler::CopyRows(ScalerSource const& source, std::uint32_t firstRow) {
    PixFmtDescription const& format = *PixFmtDescription::Find(source.format);
    ScalerSource copy = source;
    copy.height = source.height - firstRow;
    std::array<std::size_t, 4> starts{};
    std::size_t size = 0;
    auto const strideOf = [](std::uint64_t width) { return (width + 63) / 64 * 64; };
    for (std::size_t i = 0; i < format.planesCount; ++i) {
        starts[i] = size;
        std::uint64_t const rows = source.planes[i].GetHeight() - (firstRow >> format.planes[i].shiftY);
        size += strideOf(source.planes[i].GetWidth()) * rows + OVERREAD;
    }
    tail.resize(size);
    for (std::size_t i = 0; i < format.planesCount; ++i) {
        ConstPlane const& plane = source.planes[i];
        std::uint64_t const first = firstRow >> format.planes[i].shiftY;
        MutablePlane const rows(tail.data() + starts[i], static_cast<std::int64_t>(strideOf(plane.GetWidth())),
                                plane.GetWidth(), plane.GetHeight() - first);
        CopyPlane({plane.GetRow(first), plane.GetStride(), plane.GetWidth(), plane.GetHeight() - first}, rows);
        copy.planes[i] = rows;
    }
    return copy;
}

void Scaler::Scale(ScalerSource const& source, ScalerTarget const& target, SettingsResizer::ResizeMethods method) {
    bool const isOne = (target.width == 1 && source.width > 1) || (target.height == 1 && source.height > 1);
    if (isOne && PixFmtDescription::Find(target.format)->planesCount == 1)
        ScaleByMeans(source, target, method);
    else
        ScaleAtOnce(source, target, method);
}

/// Where a side shrinks to one sample libswscale places the filter beside the picture (2 to 1 takes the second sample
/// alone). So such a side is left at up to 64 samples, and their mean is the one.
void Scaler::ScaleByMeans(ScalerSource const& source, ScalerTarget const& target,
                          SettingsResizer::ResizeMethods method) {
    static constexpr std::uint32_t KEPT = 64;
    std::uint64_t const across = target.width == 1 ? std::min(source.width, KEPT) : 1;
    std::uint64_t const down = target.height == 1 ? std::min(source.height, KEPT) : 1;
    std::uint64_t const bytes = PixFmtDescription::Find(target.format)->planes[0].bytes;
    std::uint64_t const rowBytes = target.width * across * bytes;
    std::uint64_t const stride = (rowBytes + 63) / 64 * 64;
    std::uint64_t const rows = target.height * down;
    means.resize(stride * rows + OVERREAD);
    MutablePlane const plane(means.data(), static_cast<std::int64_t>(stride), rowBytes, rows, bytes);
    ScaleAtOnce(source,
                {target.format,
                 static_cast<std::uint32_t>(target.width * across),
                 static_cast<std::uint32_t>(rows),
                 {plane},
                 target.isWords},
                method);
    if (target.isWords)
        WriteMeans<std::uint16_t>(plane, across, down, 1, target.planes[0]);
    else
        WriteMeans<unsigned char>(plane, across, down, bytes, target.planes[0]);
}

void Scaler::ScaleAtOnce(ScalerSource const& source, ScalerTarget const& target,
                         SettingsResizer::ResizeMethods method) {
    Geometry const geometry{ToLibrary(source), static_cast<int>(source.width), static_cast<int>(source.height),
                            ToLibrary(target), static_cast<int>(target.width), static_cast<int>(target.height),
                            ToFlags(method)};
    auto const refuse = [&] {
        VELNOR_THROW(ProcException,
                     "libswscale cannot scale " +
                         Describe(geometry.sourceFormat, geometry.sourceWidth, geometry.sourceHeight) + " to " +
                         Describe(geometry.targetFormat, geometry.targetWidth, geometry.targetHeight) + ".");
    };
    SwsContext* const context = FindContext(geometry);
    if (context == nullptr) refuse();
    RowEnds const rowEnds(target);
    auto const targetPointers = Pointers(target);
    auto const targetStrides = Strides(target);
    auto const run = [&](ScalerSource const& rows, std::uint32_t firstRow) {
        return sws_scale(context, Pointers(rows).data(), Strides(rows).data(), static_cast<int>(firstRow),
                         static_cast<int>(rows.height), targetPointers.data(), targetStrides.data());
    };
    std::uint32_t const firstTailRow = FirstTailRow(source, *PixFmtDescription::Find(source.format));
    ScalerSource head = source;
    head.height = firstTailRow;
    if (firstTailRow > 0 && run(head, 0) < 0) refuse();
    if (run(CopyRows(source, firstTailRow), firstTailRow) < 0) refuse();
}

} // namespace Velnor::Proc
