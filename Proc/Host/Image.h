#pragma once

#include "Proc/Host/SampleStorage.h"
#include "Proc/Interfaces/IData.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Velnor::Proc {

/// The host's picture. Copies and parts share samples; whoever writes first while they are shared, or while they are
/// the caller's own memory, gets a duplicate of the rectangle it shows. Extra alpha planes are never written, only
/// replaced, so copies share them for good.
class Image : public IDataVideo {
public:
    /// A view on samples, and where its samples are.
    struct View {
        SamplesHandle samples;
        PlaneArray planes;
    };

    /// Everything that a copy takes over.
    struct State {
        std::shared_ptr<MemoryPool> pool;
        PixFmtDescription const* description = nullptr;
        FrameFormat frame;
        Rectangle rectangle; ///< In the picture that this one was cut from; stays when the samples are duplicated.
        View view;
        std::array<View, 2> extraAlpha; ///< Each with plane 0 only; without samples when there is none.
        std::int64_t timeStamp = 0;
        std::int64_t duration = 0;
    };

    /// Throws ProcException for an unknown format or an impossible frame, std::bad_alloc.
    static VideoHandle Create(std::shared_ptr<MemoryPool> const& pool, PixFmt format, FrameFormat const& frame);

    /// A picture on the caller's memory. Throws ProcException when the planes are not those of such a picture.
    static VideoHandle Wrap(std::shared_ptr<MemoryPool> const& pool, PixFmt format, FrameFormat const& frame,
                            std::vector<ConstPlane> const& planes, intrusive_ptr<IRefCountable const> const& owner);

    explicit Image(State initial);

    DataKind GetDataKind() const override { return DataKind::Video; }
    std::uint64_t GetId() const override { return id; }
    std::uint64_t GetMemorySize() const override;
    std::int64_t GetTimeStamp() const override { return state.timeStamp; }
    void SetTimeStamp(std::int64_t microseconds) override { state.timeStamp = microseconds; }
    std::int64_t GetDuration() const override { return state.duration; }
    void SetDuration(std::int64_t microseconds) override { state.duration = microseconds; }
    void CopyAttributes(IData const& source) override;
    bool IsShared() const override { return !state.view.samples->IsWritable(); }
    bool HasAlpha() const override;
    FrameFormat const& GetFrameFormat() const override { return state.frame; }
    void SetAspect(std::uint32_t numerator, std::uint32_t denominator) override;
    PixFmtDescription const& GetDescription() const override { return *state.description; }
    PixFmt GetPixFmt() const override { return state.description->format; }

    Rectangle GetRectangle() const override { return state.rectangle; }
    void SetRectangle(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) override;
    void SetPlane(unsigned char index, ConstPlane const& alpha) override;
    ConstPlane GetExtraAlpha(unsigned char index) const override;
    void DropExtraAlpha() override { state.extraAlpha = {}; }
    MutablePlane GetMutablePlane(unsigned char index) override;
    ConstPlane GetPlane(unsigned char index) const override;
    void Fill(Color const& color) override;
    VideoHandle MakePart(Rectangle const& part) const override;
    void Detach() override;
    VideoHandle MakeCopy(CopyMode mode) const override;
    void Relabel(PixFmt format) override;

private:
    View AllocateView() const;
    void RequirePlane(unsigned char index) const;
    void RequireRectangle(Rectangle const& part) const;

    State state;
    std::uint64_t const id;
};

} // namespace Velnor::Proc
