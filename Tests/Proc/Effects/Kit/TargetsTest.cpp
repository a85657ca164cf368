// Every instruction set gives the bytes that the scalar code gives: kernels on rows of all lengths about those of
// vectors, then every effect.
#include "Proc/Effects/Kit/Targets.h"

#include "Proc/Effects/General/Kernels/BlendRows.h"
#include "Proc/Effects/General/Kernels/RemapRows.h"
#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/TurnedMean.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/LumaRow.h"
#include "Proc/Effects/Lumetta/Kernels/Shapes/DrawShape.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Tests/Support/HostRun.h"
#include "Tests/Support/Refusal.h"
#include "Tests/Support/RegisteredEffects.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace Velnor::Proc::Kernels {
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;

/// Lets kernels use so much until the end of its life.
class TargetLimit {
public:
    explicit TargetLimit(Target target) : before(UsedTarget().exchange(target)) {}
    ~TargetLimit() { UsedTarget() = before; }
    TargetLimit(TargetLimit const&) = delete;
    TargetLimit& operator=(TargetLimit const&) = delete;

private:
    Target before;
};

/// Calls work() once for each target from the scalar one on; what it gives must always be the same.
template <class Work>
void ExpectTheSameOnEveryTarget(Work const& work) {
    std::optional<decltype(work())> expected;
    for (int i = 0; i <= static_cast<int>(UsedTarget().load()); ++i) {
        TargetLimit const limit(static_cast<Target>(i));
        auto const result = work();
        if (!expected) expected = result;
        ASSERT_EQ(result, *expected) << GetTargetName(static_cast<Target>(i));
    }
}

Bytes Noise(std::size_t size) {
    ContextHandle const context = CreateContext();
    Bytes bytes = Samples(*MakeNoise(*context, PixFmt::GRAY8, static_cast<std::uint32_t>(size + 1), 1));
    bytes.resize(size);
    return bytes;
}

TEST(Targets, TheBestVariantUpToTheLimitIsChosen) {
    constexpr Variants VARIANTS{Variant{Target::Scalar, 's'}, Variant{Target::Ssse3, '3'}, Variant{Target::Avx2, 'a'}};
    std::vector<std::pair<Target, char>> const choices{{Target::Scalar, 's'}, {Target::Sse2, 's'},
                                                       {Target::Ssse3, '3'},  {Target::Sse4, '3'},
                                                       {Target::Avx2, 'a'},   {Target::Avx512, 'a'}};
    for (auto const& [limit, expected] : choices) EXPECT_EQ(VARIANTS.Choose(limit), expected) << GetTargetName(limit);
    if (UsedTarget() < Target::Ssse3) GTEST_SKIP() << "This processor has too few instruction sets.";
    TargetLimit const limit(Target::Ssse3);
    EXPECT_EQ(VARIANTS.Choose(), '3');
    EXPECT_EQ(VARIANTS.ListTargets(), (std::vector{Target::Scalar, Target::Ssse3}));
    EXPECT_EQ(RefusalOf([] { RequireTarget(Target::Avx2); }), "kernels may not use avx2");
}

TEST(Targets, KernelsGiveTheSameBytes) {
    for (std::size_t const pixels : {1U, 3U, 7U, 16U, 33U, 64U, 131U})
        for (unsigned int bytes = 1; bytes <= 4; ++bytes) {
            SCOPED_TRACE(std::to_string(pixels) + " pixels of " + std::to_string(bytes));
            constexpr std::size_t ROWS = 9;
            auto const stride = static_cast<std::int64_t>(pixels * bytes);
            Bytes const source = Noise(pixels * bytes * ROWS);
            ConstPlane const plane(source.data(), stride, pixels * bytes, ROWS, bytes);
            Bytes target(source.size());
            MutablePlane const to(target.data(), stride, pixels * bytes, ROWS, bytes);
            ExpectTheSameOnEveryTarget([&] {
                Bytes row(source.rbegin(), source.rend());
                BlendPixels(row.data(), source.data(), source.data(), pixels, {bytes, {255, 0, 255, 255}});
                return row;
            });
            ExpectTheSameOnEveryTarget([&] {
                RowTaps taps(pixels);
                std::vector<float> x(pixels);
                std::vector<float> y(pixels);
                for (std::size_t i = 0; i < pixels; ++i) {
                    x[i] = static_cast<float>(source[i]) / 200 * static_cast<float>(pixels) - 2;
                    y[i] = static_cast<float>(i % 11) * 0.9F - 0.4F;
                }
                SplitPositions(x.data(), y.data(), static_cast<std::uint32_t>(pixels), ROWS, taps);
                SampleRow(plane, bytes, taps, target.data());
                return target;
            });
            ExpectTheSameOnEveryTarget([&] {
                Table table;
                for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<unsigned char>(i * 7 + 3);
                MapBytes(plane, to, {&table, 1}, bytes);
                return target;
            });
            ExpectTheSameOnEveryTarget([&] {
                MeanOfTwo(plane, to, bytes, {0.98, 0.17, 4, 3}, {1.1, -0.05, 20, 5});
                return target;
            });
            if (bytes < 3) continue;
            ExpectTheSameOnEveryTarget([&] {
                WriteLumaRow(source.data(), pixels * ROWS, bytes, WeightsByByte(false), target.data());
                return target;
            });
        }
}

TEST(Targets, ShapesAndConvolutionsAreTheSame) {
    for (Outline const outline : {Outline::Ellipse, Outline::Rectangle, Outline::Band, Outline::Polygon}) {
        MaskShape shape;
        shape.outline = outline;
        shape.centreX = 30.5;
        shape.centreY = 17;
        shape.halfWidth = 21;
        shape.halfHeight = 13.5;
        shape.feather = 0.4;
        shape.sides = 5;
        ExpectTheSameOnEveryTarget([&] {
            Bytes mask(67 * 35);
            DrawShape(MutablePlane(mask.data(), 67, 67, 35), shape);
            return mask;
        });
    }
    Bytes const picture = Noise(97 * 3 * 41);
    Bytes const disc = Noise(9 * 7);
    BokehKernel const kernel = MakeBokehKernel({disc.data(), 9, 9, 7}, 0.8, 1.5);
    PaddedPicture const padded = PadPicture({picture.data(), 97 * 3, 97 * 3, 41, 3}, kernel, 0.9, 2);
    ExpectTheSameOnEveryTarget([&] { return Convolve(padded, kernel); });
}

TEST(Targets, EffectsGiveTheSameBytes) {
    HostRun run;
    for (RegisteredEffect const& each : run.host.GetEffects())
        for (PixFmt const format : {PixFmt::RGBA, PixFmt::BGR24, PixFmt::YUVA420P}) {
            // Which makes nothing of noise, and which only hand pictures to a library.
            if (each.classId == SettingsEffectPanorama::CLASS_ID || each.classId.find("Face") != std::string::npos)
                continue;
            SCOPED_TRACE(each.classId + " on " + std::string(PixFmtDescription::Find(format)->name));
            ExpectTheSameOnEveryTarget([&] {
                auto const effect = run.host.GetFactory()->CreateEffect(each.classId, each.implName);
                effect->SetSettings(*TypicalSettings(effect->GetSettingsBase().GetType()));
                std::vector<DataHandle> inputs{MakeNoise(run.context, format, 37, 23)};
                if (each.kind == EffectKind::TwoInput) inputs.push_back(MakeNoise(run.context, format, 37, 23, 2));
                Bytes samples;
                RefusalOf([&] {
                    DataHandle const result = effect->ProcessData(inputs);
                    if (result) samples = Samples(AsVideo(result));
                });
                return samples;
            });
        }
}

TEST(Targets, TheEnvironmentLimitsThemByName) {
    for (std::string_view const name : TARGET_NAMES) {
        setenv("VELNOR_TARGET", std::string(name).c_str(), 1);
        EXPECT_EQ(GetTargetName(ReadTargetLimit()), name);
    }
    setenv("VELNOR_TARGET", "mmx", 1);
    EXPECT_EQ(RefusalOf([] { ReadTargetLimit(); }),
              "The environment variable VELNOR_TARGET is \"mmx\"; it takes scalar, sse2, ssse3, sse4, avx2, avx512, "
              "avx512vbmi.");
    unsetenv("VELNOR_TARGET");
    EXPECT_EQ(ReadTargetLimit(), Target::Avx512Vbmi);
}

} // namespace
} // namespace Velnor::Proc::Kernels
