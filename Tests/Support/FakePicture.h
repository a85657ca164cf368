#pragma once

#include "Proc/Interfaces/IData.h"

#include <algorithm>
#include <array>
#include <vector>

namespace Velnor::Tests {

/// A picture as plain as can be, for tests of what lies below the host: planes with padded rows between guard bytes. It
/// shares nothing and has no extra alpha.
class FakePicture : public Proc::IDataVideo {
public:
    static constexpr unsigned char GUARD = 0xa5;
    static constexpr std::int64_t PADDING = 5;

    FakePicture(PixFmt format, std::uint32_t width, std::uint32_t height)
        : description(PixFmtDescription::Find(format)), frame(Proc::FrameFormat::Square(width, height)) {
        for (unsigned char i = 0; i < description->planesCount; ++i)
            samples[i].assign(static_cast<std::size_t>(Stride(i) * (Rows(i) + 2)), GUARD);
    }

    /// Sets every sample of a plane.
    void Paint(unsigned char index, unsigned char value) {
        Proc::MutablePlane const plane = GetMutablePlane(index);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) std::fill_n(plane.GetRow(y), plane.GetWidth(), value);
    }

    /// Samples of a plane, row after row, without padding.
    std::vector<int> Read(unsigned char index) const {
        Proc::ConstPlane const plane = GetPlane(index);
        std::vector<int> all;
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            all.insert(all.end(), plane.GetRow(y), plane.GetRow(y) + plane.GetWidth());
        return all;
    }

    bool AreGuardsWhole() const {
        for (unsigned char i = 0; i < description->planesCount; ++i) {
            std::vector<unsigned char> rest = samples[i];
            for (std::int64_t y = 1; y <= Rows(i); ++y) std::fill_n(rest.begin() + y * Stride(i), Width(i), GUARD);
            if (std::ranges::any_of(rest, [](unsigned char byte) { return byte != GUARD; })) return false;
        }
        return true;
    }

    Proc::DataKind GetDataKind() const override { return Proc::DataKind::Video; }
    std::uint64_t GetId() const override { return 0; }
    std::uint64_t GetMemorySize() const override { return 0; }
    std::int64_t GetTimeStamp() const override { return timeStamp; }
    void SetTimeStamp(std::int64_t microseconds) override { timeStamp = microseconds; }
    std::int64_t GetDuration() const override { return duration; }
    void SetDuration(std::int64_t microseconds) override { duration = microseconds; }
    void CopyAttributes(Proc::IData const& source) override {
        timeStamp = source.GetTimeStamp();
        duration = source.GetDuration();
    }
    bool IsShared() const override { return false; }
    bool HasAlpha() const override { return description->hasAlpha; }
    Proc::FrameFormat const& GetFrameFormat() const override { return frame; }
    void SetAspect(std::uint32_t numerator, std::uint32_t denominator) override {
        frame.aspectNumerator = numerator;
        frame.aspectDenominator = denominator;
    }
    PixFmtDescription const& GetDescription() const override { return *description; }
    PixFmt GetPixFmt() const override { return description->format; }
    Proc::Rectangle GetRectangle() const override { return {0, 0, frame.width, frame.height}; }
    void SetRectangle(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) override {}
    void SetPlane(unsigned char, Proc::ConstPlane const&) override {}
    Proc::ConstPlane GetExtraAlpha(unsigned char) const override { return {}; }
    void DropExtraAlpha() override {}
    void Relabel(PixFmt format) override { description = PixFmtDescription::Find(format); }
    Proc::MutablePlane GetMutablePlane(unsigned char index) override {
        return {samples[index].data() + Stride(index), Stride(index), static_cast<std::uint64_t>(Width(index)),
                static_cast<std::uint64_t>(Rows(index))};
    }
    Proc::ConstPlane GetPlane(unsigned char index) const override {
        return {samples[index].data() + Stride(index), Stride(index), static_cast<std::uint64_t>(Width(index)),
                static_cast<std::uint64_t>(Rows(index))};
    }
    void Fill(Proc::Color const&) override {}
    intrusive_ptr<Proc::IDataVideo> MakePart(Proc::Rectangle const&) const override {
        return MakeCopy(Proc::CopyMode::Value);
    }
    void Detach() override {}
    intrusive_ptr<Proc::IDataVideo> MakeCopy(Proc::CopyMode) const override {
        auto copy = MakeShared<FakePicture>(description->format, frame.width, frame.height);
        copy->frame = frame;
        copy->samples = samples;
        copy->CopyAttributes(*this);
        return copy;
    }

private:
    std::int64_t Width(unsigned char index) const {
        return description->GetPlanWidthSize(static_cast<int>(frame.width), index);
    }
    std::int64_t Rows(unsigned char index) const {
        return description->GetPlanHeight(static_cast<int>(frame.height), index);
    }
    std::int64_t Stride(unsigned char index) const { return Width(index) + PADDING; }

    PixFmtDescription const* description;
    Proc::FrameFormat frame;
    std::array<std::vector<unsigned char>, 4> samples;
    std::int64_t timeStamp = 0;
    std::int64_t duration = 0;
};

} // namespace Velnor::Tests
