#include "Proc/Host/Image.h"

#include "Proc/Host/FillPlane.h"
#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>

namespace Velnor::Proc {
namespace {

std::string Text(std::uint64_t number) { return std::to_string(number); }

std::string SizeText(std::uint64_t width, std::uint64_t height, std::string const& unit) {
    return Proc::SizeText(width, height) + " " + unit;
}

PixFmtDescription const& FindFormat(PixFmt format) {
    PixFmtDescription const* const description = PixFmtDescription::Find(format);
    if (description == nullptr)
        VELNOR_THROW(ProcException, "Pixel format " + std::to_string(static_cast<std::int32_t>(format)) +
                                        " is unknown: pictures are of the 8-bit formats in PixFmt.");
    return *description;
}

void RequireFrame(FrameFormat const& frame) {
    auto const isSide = [](std::uint32_t side) { return side >= 1 && side <= LARGEST_PICTURE_SIDE; };
    if (!isSide(frame.width) || !isSide(frame.height))
        VELNOR_THROW(ProcException, "A picture of " + SizeText(frame.width, frame.height, "pixels") +
                                        " is impossible: each side is 1 to " + Text(LARGEST_PICTURE_SIDE) + ".");
}

bool IsPalette(PixFmtDescription const& description, std::size_t plane) {
    return description.model == ColorModel::Palette && plane == 1;
}

std::uint64_t NextId() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

Image::State MakeState(std::shared_ptr<MemoryPool> const& pool, PixFmt format, FrameFormat const& frame) {
    Image::State state;
    state.pool = pool;
    state.description = &FindFormat(format);
    RequireFrame(frame);
    state.frame = frame;
    state.rectangle = {0, 0, frame.width, frame.height};
    return state;
}

struct Shifts {
    unsigned char x;
    unsigned char y;
};

/// Resolution of an extra alpha plane against the picture's.
Shifts GetAlphaShifts(PixFmtDescription const& description, std::size_t index) {
    if (index == 0) return {0, 0};
    return {description.chromaShiftX, description.chromaShiftY};
}

} // namespace

VideoHandle Image::Create(std::shared_ptr<MemoryPool> const& pool, PixFmt format, FrameFormat const& frame) {
    State state = MakeState(pool, format, frame);
    state.view.samples = AllocateSamples(*pool, GetPlaneSizes(*state.description, frame));
    state.view.planes = state.view.samples->GetPlanes();
    return MakeShared<Image>(std::move(state));
}

VideoHandle Image::Wrap(std::shared_ptr<MemoryPool> const& pool, PixFmt format, FrameFormat const& frame,
                        std::vector<ConstPlane> const& planes, intrusive_ptr<IRefCountable const> const& owner) {
    State state = MakeState(pool, format, frame);
    std::string const what = "A picture in format " + std::string(state.description->name);
    std::vector<PlaneSize> const sizes = GetPlaneSizes(*state.description, frame);
    if (planes.size() != sizes.size())
        VELNOR_THROW(ProcException, what + " has " + Text(sizes.size()) + " planes, not " + Text(planes.size()) + ".");
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        ConstPlane const& plane = planes[i];
        PlaneSize const& size = sizes[i];
        if (plane.GetData() == nullptr) VELNOR_THROW(ProcException, what + " needs plane " + Text(i) + ", it is null.");
        if (plane.GetWidth() < size.rowBytes || plane.GetHeight() < size.rows)
            VELNOR_THROW(ProcException, what + ", " + SizeText(frame.width, frame.height, "pixels") +
                                            ", needs a plane " + Text(i) + " of " +
                                            SizeText(size.rowBytes, size.rows, "bytes") + ", not " +
                                            SizeText(plane.GetWidth(), plane.GetHeight(), "bytes") + ".");
        state.view.planes[i] = {plane.GetData(), plane.GetStride(), size.rowBytes, size.rows, size.sampleBytes};
    }
    state.view.samples = MakeShared<SampleStorage>(state.view.planes, owner);
    return MakeShared<Image>(std::move(state));
}

Image::Image(State initial) : state(std::move(initial)), id(NextId()) {}

std::uint64_t Image::GetMemorySize() const {
    std::uint64_t bytes = state.view.samples->GetBytes();
    for (View const& alpha : state.extraAlpha)
        if (alpha.samples) bytes += alpha.samples->GetBytes();
    return bytes;
}

void Image::CopyAttributes(IData const& source) {
    state.timeStamp = source.GetTimeStamp();
    state.duration = source.GetDuration();
}

bool Image::HasAlpha() const {
    return state.description->hasAlpha || state.extraAlpha[0].samples || state.extraAlpha[1].samples;
}

void Image::SetAspect(std::uint32_t numerator, std::uint32_t denominator) {
    state.frame.aspectNumerator = numerator;
    state.frame.aspectDenominator = denominator;
}

void Image::SetRectangle(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) {
    RequireRectangle({x, y, width, height});
    PixFmtDescription const& description = *state.description;
    for (std::size_t i = 0; i < description.planesCount; ++i) {
        PlaneLayout const& layout = description.planes[i];
        if (IsPalette(description, i)) continue;
        state.view.planes[i] =
            state.view.planes[i].MakeSubplane(x, y, width, height, layout.bytes, layout.shiftX, layout.shiftY);
    }
    for (std::size_t i = 0; i < state.extraAlpha.size(); ++i) {
        View& alpha = state.extraAlpha[i];
        Shifts const shifts = GetAlphaShifts(description, i);
        if (alpha.samples) alpha.planes[0] = alpha.planes[0].MakeSubplane(x, y, width, height, 1, shifts.x, shifts.y);
    }
    state.frame.width = width;
    state.frame.height = height;
    state.rectangle = {state.rectangle.x + x, state.rectangle.y + y, width, height};
}

void Image::RequireRectangle(Rectangle const& part) const {
    FrameFormat const& frame = state.frame;
    std::string const what =
        "The rectangle of " + SizeText(part.width, part.height, "pixels") + " at " + Text(part.x) + ", " + Text(part.y);
    if (part.width == 0 || part.height == 0) VELNOR_THROW(ProcException, what + " is empty.");
    if (std::uint64_t{part.x} + part.width > frame.width || std::uint64_t{part.y} + part.height > frame.height)
        VELNOR_THROW(ProcException,
                     what + " reaches out of the picture, " + SizeText(frame.width, frame.height, "pixels") + ".");
    if (!state.description->IsAligned(part.x, part.y))
        VELNOR_THROW(
            ProcException,
            what + " cuts a chroma sample of format " + std::string(state.description->name) + ", one for " +
                SizeText(1U << state.description->chromaShiftX, 1U << state.description->chromaShiftY, "pixels") + ".");
}

void Image::SetPlane(unsigned char index, ConstPlane const& alpha) {
    if (index >= state.extraAlpha.size())
        VELNOR_THROW(ProcException, "Extra alpha plane " + Text(index) + " does not exist: there are 0 and 1.");
    if (alpha.IsEmpty()) {
        state.extraAlpha[index] = {};
        return;
    }
    Shifts const shifts = GetAlphaShifts(*state.description, index);
    ConstPlane const needed = alpha.MakeSubplane(0, 0, state.frame.width, state.frame.height, 1, shifts.x, shifts.y);
    std::string const what = "Extra alpha plane " + Text(index) + " needs ";
    if (alpha.GetSampleBytes() != 1)
        VELNOR_THROW(ProcException, what + "one byte a sample, not " + Text(alpha.GetSampleBytes()) + ".");
    if (alpha.GetWidth() < needed.GetWidth() || alpha.GetHeight() < needed.GetHeight())
        VELNOR_THROW(ProcException, what + "at least " + SizeText(needed.GetWidth(), needed.GetHeight(), "samples") +
                                        ", not " + SizeText(alpha.GetWidth(), alpha.GetHeight(), "samples") + ".");
    SamplesHandle const samples = AllocateSamples(*state.pool, {{needed.GetWidth(), needed.GetHeight(), 1}});
    CopyPlane(needed, MakeMutable(samples->GetPlanes()[0]));
    state.extraAlpha[index] = {samples, samples->GetPlanes()};
}

ConstPlane Image::GetExtraAlpha(unsigned char index) const {
    return index < state.extraAlpha.size() ? state.extraAlpha[index].planes[0] : ConstPlane();
}

void Image::RequirePlane(unsigned char index) const {
    if (index >= state.description->planesCount)
        VELNOR_THROW(ProcException, "Plane " + Text(index) + " does not exist: format " +
                                        std::string(state.description->name) + " has " +
                                        Text(state.description->planesCount) + ".");
}

MutablePlane Image::GetMutablePlane(unsigned char index) {
    RequirePlane(index);
    Detach();
    return MakeMutable(state.view.planes[index]);
}

ConstPlane Image::GetPlane(unsigned char index) const {
    RequirePlane(index);
    return state.view.planes[index];
}

Image::View Image::AllocateView() const {
    SamplesHandle samples = AllocateSamples(*state.pool, GetPlaneSizes(*state.description, state.frame));
    PlaneArray const& planes = samples->GetPlanes();
    return {samples, planes};
}

void Image::Detach() {
    if (state.view.samples->IsWritable()) return;
    View own = AllocateView();
    for (std::size_t i = 0; i < state.description->planesCount; ++i)
        CopyPlane(state.view.planes[i], MakeMutable(own.planes[i]));
    state.view = std::move(own);
}

void Image::Fill(Color const& color) {
    // Every sample is painted: shared ones need not be duplicated first.
    if (!state.view.samples->IsWritable()) state.view = AllocateView();
    for (unsigned char i = 0; i < state.description->planesCount; ++i)
        FillPlane(MakeMutable(state.view.planes[i]), *state.description, i, color);
}

VideoHandle Image::MakePart(Rectangle const& part) const {
    VideoHandle const copy = MakeCopy(CopyMode::Value);
    copy->SetRectangle(part.x, part.y, part.width, part.height);
    return copy;
}

VideoHandle Image::MakeCopy(CopyMode mode) const {
    State copy = state;
    if (mode == CopyMode::Share) {
        copy.timeStamp = 0;
        copy.duration = 0;
    }
    VideoHandle image = MakeShared<Image>(std::move(copy));
    // The caller's memory may go before this copy does.
    if (mode == CopyMode::Independent && !state.view.samples->IsOwned()) image->Detach();
    return image;
}

void Image::Relabel(PixFmt format) {
    PixFmtDescription const& next = FindFormat(format);
    PixFmtDescription const& current = *state.description;
    auto const isAlike = [](PlaneLayout const& a, PlaneLayout const& b) {
        return a.bytes == b.bytes && a.shiftX == b.shiftX && a.shiftY == b.shiftY;
    };
    bool const areAlike =
        next.planesCount == current.planesCount && next.chromaShiftX == current.chromaShiftX &&
        next.chromaShiftY == current.chromaShiftY && IsPalette(next, 1) == IsPalette(current, 1) &&
        std::equal(next.planes.begin(), next.planes.begin() + next.planesCount, current.planes.begin(), isAlike);
    if (!areAlike)
        VELNOR_THROW(ProcException, "A picture in format " + std::string(current.name) + " cannot be read as " +
                                        std::string(next.name) + ": its planes are others.");
    state.description = &next;
}

} // namespace Velnor::Proc
