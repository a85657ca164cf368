// Every effect on every size and format, with settings that people would choose and settings that nobody should: it
// works or refuses in words, touches nothing of the caller's, and does the same again.

#include "Proc/Host/Host.h"
#include "Proc/Interfaces/SettingsText.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RegisteredEffects.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <ostream>
#include <random>
#include <span>

namespace Velnor::Proc {

namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;
using Random = std::minstd_rand; // Of the standard, so that a failure is the same on every machine.

// Each format meets as many of the sizes. Under the sanitizer, which is slow, one; the sizes still meet every layout.
#ifdef __SANITIZE_ADDRESS__
constexpr int SIZES_OF_FORMAT = 1;
#else
constexpr int SIZES_OF_FORMAT = 3;
#endif

/// 0 to 1.
double RandomShare(Random& random) {
    return static_cast<double>(random() - Random::min()) / static_cast<double>(Random::max());
}

std::string RandomNumber(Random& random, SettingsField const& field, bool isValid) {
    constexpr std::array<double, 9> EXTREMES{0, -1, 1, -1000, 255.5, 65536, 2147483647, -2147483648.0, 1e300};
    bool const isInteger = field.type == "integer";
    double value = EXTREMES[random() % EXTREMES.size()];
    // Low more often than high: a radius is costly, and half of those would be large.
    if (isValid && field.range)
        value = field.range->low + std::pow(RandomShare(random), 3.0) * (field.range->high - field.range->low);
    if (isValid && !field.range) value = static_cast<double>(random() % 64);
    if (isInteger) value = std::floor(std::clamp(value, -2147483648.0, 2147483647.0));
    return isInteger ? std::to_string(static_cast<std::int64_t>(value)) : TextForm<double>::Print(value);
}

/// Half of the fields as they are by default, the others at random.
std::unique_ptr<Settings> RandomSettings(Random& random, SettingsType const& type, bool areValid) {
    std::unique_ptr<Settings> settings = type.create();
    for (SettingsField const& field : type.describe()) {
        if (field.isOutput || random() % 2 == 0) continue;
        std::string text = field.example;
        if (field.type == "integer" || field.type == "number") text = RandomNumber(random, field, areValid);
        if (!field.choices.empty()) text = field.choices[random() % field.choices.size()];
        try {
            field.parseAny(*settings, text);
        } catch (SettingsTextException const&) {
            // A number that the field's type cannot hold: the default stays.
        }
    }
    return settings;
}

/// The caller's own memory around a picture: rows with bytes between them, and bytes before and after.
class GuardedPicture {
public:
    GuardedPicture(PixFmt format, std::uint32_t width, std::uint32_t height, std::uint32_t seed, bool isMask = false) {
        IEffectContext& context = *PluginHost().GetContext();
        VideoHandle const noise = MakeNoise(context, format, width, height, seed);
        std::vector<ConstPlane> planes;
        std::size_t bytes = MARGIN;
        for (unsigned char i = 0; i < GetPlanesCount(*noise); ++i) bytes += Size(noise->GetPlane(i)) + MARGIN;
        memory.assign(bytes, GUARD);
        std::size_t at = MARGIN;
        for (unsigned char i = 0; i < GetPlanesCount(*noise); ++i) {
            ConstPlane const source = noise->GetPlane(i);
            MutablePlane const target(memory.data() + at, Stride(source), source.GetWidth(), source.GetHeight(),
                                      source.GetSampleBytes());
            CopyPlane(source, target);
            if (isMask) ReduceToStrokes(target);
            planes.push_back(
                {target.GetData(), Stride(source), source.GetWidth(), source.GetHeight(), source.GetSampleBytes()});
            at += Size(source) + MARGIN;
        }
        original = memory;
        context.WrapImage(&picture, format, FrameFormat::Square(width, height), planes, nullptr);
    }

    VideoHandle const& Get() const { return picture; }
    bool IsUntouched() const { return memory == original; }

private:
    /// The values by which effects know strokes, and 0 between them.
    static void ReduceToStrokes(MutablePlane const& mask) {
        constexpr std::array<unsigned char, 3> VALUES{0, 128, 255};
        for (std::uint64_t y = 0; y < mask.GetHeight(); ++y)
            for (unsigned char& value : std::span(mask.GetRow(y), mask.GetWidth())) value = VALUES[value % 3];
    }

    static constexpr std::size_t MARGIN = 67;
    static constexpr unsigned char GUARD = 0x5a;
    static std::int64_t Stride(ConstPlane const& plane) { return static_cast<std::int64_t>(plane.GetWidth()) + 13; }
    static std::size_t Size(ConstPlane const& plane) {
        return static_cast<std::size_t>(Stride(plane)) * plane.GetHeight();
    }

    Bytes memory;
    Bytes original;
    VideoHandle picture;
};

struct Outcome {
    std::string refusal; ///< Empty when the effect did its work.
    std::vector<FrameFormat> frames;
    Bytes samples;
    friend bool operator==(Outcome const&, Outcome const&) = default;
};

/// Whether what an effect did before may show in its results.
bool RemembersCalls(SettingsType const& type) {
    return type.classId == "SettingsEffectAutoEnhance" ||              // Blends with the opacity of the call before.
           type.classId == "SettingsEffectDirectionalAreaDeformation"; // Adds its stroke to those before.
}

class Census : public ::testing::TestWithParam<RegisteredEffect> {
protected:
    std::vector<GuardedPicture> MakeInputs(PixFmt format, std::uint32_t width, std::uint32_t height,
                                           bool isMask) const {
        std::vector<GuardedPicture> inputs;
        inputs.emplace_back(format, width, height, 1);
        if (GetParam().kind != EffectKind::OneInput)
            inputs.emplace_back(isMask ? PixFmt::GRAY8 : format, width, height, 2, isMask);
        return inputs;
    }

    Outcome Run(IEffect& effect, std::vector<GuardedPicture> const& pictures) const {
        std::vector<DataHandle> inputs;
        // Copies, which share the guarded samples: an effect may write to the picture that it is given.
        for (GuardedPicture const& picture : pictures) inputs.emplace_back(picture.Get()->MakeCopy(CopyMode::Value));
        Outcome outcome;
        try {
            DataHandle const result = effect.ProcessData(inputs);
            if (result) inputs = {result};
            for (DataHandle const& each : inputs) {
                outcome.frames.push_back(AsVideo(each).GetFrameFormat());
                Bytes const samples = Samples(AsVideo(each));
                outcome.samples.insert(outcome.samples.end(), samples.begin(), samples.end());
            }
        } catch (ProcException const& refusal) {
            outcome.refusal = DescribeException(refusal);
            EXPECT_GT(outcome.refusal.size(), 10U);
        } catch (std::bad_alloc const&) {
            outcome.refusal = "not enough memory";
        }
        return outcome;
    }

    intrusive_ptr<IEffect> Make() const {
        return PluginHost().GetFactory()->CreateEffect(GetParam().classId, GetParam().implName);
    }
};

TEST_P(Census, WorksOrRefusesAndDoesTheSameAgain) {
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 8> SIZES{
        {{1, 1}, {2, 1}, {1, 3}, {5, 4}, {8, 8}, {33, 31}, {17, 64}, {1031, 17}}};
    Random random(static_cast<unsigned int>(GetParam().classId.size()));
    intrusive_ptr<IEffect> const seasoned = Make(); // Sees everything, failures included.
    SettingsType const& type = seasoned->GetSettingsBase().GetType();
    int worked = 0;
    std::size_t turn = 0;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (int each = 0; each < SIZES_OF_FORMAT; ++each) {
            auto const& [width, height] = SIZES[turn++ * 3 % SIZES.size()];
            bool const areValid = random() % 3 != 0;
            std::unique_ptr<Settings> const settings = RandomSettings(random, type, areValid);
            std::vector<GuardedPicture> const inputs = MakeInputs(format.format, width, height, random() % 2 == 0);
            std::string values;
            for (SettingsField const& field : type.describe())
                if (!field.isOutput) values += " " + field.name + "=" + field.print(*settings);
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width) + " x " + std::to_string(height) +
                         values);

            // A death by a signal leaves no trace of its own.
            if (std::getenv("VELNOR_CENSUS_TRACE") != nullptr)
                std::cerr << format.name << " " << width << " x " << height << values << std::endl;
            seasoned->SetSettings(*settings);
            Outcome const first = Run(*seasoned, inputs);
            intrusive_ptr<IEffect> const fresh = Make();
            fresh->SetSettings(*settings);
            Outcome const second = Run(*fresh, inputs);
            worked += first.refusal.empty() ? 1 : 0;
            EXPECT_EQ(first.refusal, second.refusal);
            EXPECT_EQ(first.frames, second.frames);
            EXPECT_TRUE(RemembersCalls(type) || first == second) << "another result the second time";
            for (GuardedPicture const& input : inputs) ASSERT_TRUE(input.IsUntouched());
        }
    // Noise has nothing that a panorama could be joined by.
    EXPECT_EQ(worked > 0, GetParam().classId != SettingsEffectPanorama::CLASS_ID);
}

INSTANTIATE_TEST_SUITE_P(Registry, Census, ::testing::ValuesIn(PluginHost().GetEffects()), TestName);

} // namespace
} // namespace Velnor::Proc
