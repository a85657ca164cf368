// An effect on every format, with settings that people would choose and settings that nobody should: it works or
// refuses in words, touches nothing of the caller's, and does the same again.

#include "Proc/Interfaces/SettingsText.h"
#include "Tools/check/Promises.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

using Random = std::minstd_rand; // Of the standard, so that a finding is the same on every machine.

// Each format meets as many of the sizes. Under the sanitizer, which is slow, one; the sizes still meet every layout.
#ifdef __SANITIZE_ADDRESS__
constexpr int SIZES_OF_FORMAT = 1;
#else
constexpr int SIZES_OF_FORMAT = 3;
#endif
constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 8> SIZES{
    {{1, 1}, {2, 1}, {1, 3}, {5, 4}, {8, 8}, {33, 31}, {17, 64}, {1031, 17}}};

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

std::string PrintChanges(SettingsType const& type, Settings const& settings) {
    std::string text;
    for (SettingsField const& field : type.describe())
        if (std::string const value = field.print(settings); !field.isOutput && value != field.defaultText)
            text += ", " + field.name + "=" + value;
    return text;
}

/// Greys by which effects know strokes, and black between them.
void ReduceToStrokes(IDataVideo& picture) {
    constexpr std::array<unsigned char, 3> VALUES{0, 128, 255};
    MutablePlane const mask = picture.GetMutablePlane(0);
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x)
            mask.GetRow(y)[x] = VALUES[mask.GetRow(y)[x] % VALUES.size()];
}

class RandomCalls {
public:
    RandomCalls(Subject const& checked, Journal& log)
        : subject(checked),
          journal(log),
          random(static_cast<unsigned int>(subject.GetType().classId.size())),
          seasoned(subject.Make()) {}

    void Check(PixFmt format, std::uint32_t width, std::uint32_t height) {
        bool const areValid = random() % 3 != 0;
        auto const settings = RandomSettings(random, subject.GetType(), areValid);
        std::vector<GuardedPicture> const inputs = MakeInputs(format, width, height);
        journal.Begin(NameOf(format, width, height) + PrintChanges(subject.GetType(), *settings));
        seasoned->SetSettings(*settings);
        Bytes const first = MakeOf(*seasoned, inputs);
        Bytes const second = MakeOf(*subject.Make(*settings), inputs);
        journal.Require(first == second, "other bytes, or another refusal, the second time");
        for (GuardedPicture const& input : inputs)
            journal.Require(input.IsUntouched(), "the memory that the caller shares has changed");
    }

private:
    std::vector<GuardedPicture> MakeInputs(PixFmt format, std::uint32_t width, std::uint32_t height) {
        bool const isMask = random() % 2 == 0; // Also where no mask belongs, and the other way round.
        std::vector<GuardedPicture> inputs;
        for (std::size_t i = 0; i < subject.CountInputs(); ++i) {
            VideoHandle const picture = MakeNoise(subject.GetContext(), i > 0 && isMask ? PixFmt::GRAY8 : format, width,
                                                  height, static_cast<std::uint32_t>(i + 1));
            if (i > 0 && isMask) ReduceToStrokes(*picture);
            inputs.emplace_back(subject.GetContext(), *picture);
        }
        return inputs;
    }

    Bytes MakeOf(IEffect& effect, std::vector<GuardedPicture> const& pictures) {
        std::vector<DataHandle> inputs;
        for (GuardedPicture const& picture : pictures) inputs.emplace_back(picture.Share());
        return Try(effect, std::move(inputs), journal).GetBytes();
    }

    Subject const& subject;
    Journal& journal;
    Random random;
    intrusive_ptr<IEffect> const seasoned; ///< Sees everything, failures included.
};

} // namespace

void CheckRandomCalls(Subject const& subject, Journal& journal) {
    RandomCalls calls(subject, journal);
    std::size_t turn = 0;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (int each = 0; each < SIZES_OF_FORMAT; ++each) {
            auto const& [width, height] = SIZES[turn++ * 3 % SIZES.size()];
            calls.Check(format.format, width, height);
        }
}

} // namespace Velnor::Proc::Check
