// What becomes of a photograph, and of a piece of one, does not depend on those before it.

#include "Proc/Host/PictureFile.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Tools/RunCommand.h"
#include "Tools/velnor/ApplyCommand.h"
#include "Tools/velnor/EffectStep.h"
#include "Tools/velnor/Synonyms.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace Velnor::Tool::Testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// One report of a call, and the file that was written, empty for none. Nothing in it names the output.
struct Outcome {
    nlohmann::json report;
    std::string file;
    bool operator==(Outcome const&) const = default;
};

class BatchTest : public testing::Test {
protected:
    BatchTest() : folder(MakeScratchFolder()) {
        fs::current_path(folder);
        Make("a.png", PixFmt::RGB24, 48, 40, 1);
        Make("b.png", PixFmt::RGB24, 48, 40, 2); // Differs from the first in what it shows only,
        Make("c.png", PixFmt::RGBA, 120, 24, 3); // this one in all.
        MakeStrokes("second.png", 48, 40);
    }
    ~BatchTest() override {
        fs::current_path(before);
        fs::remove_all(folder);
    }

    void Make(std::string const& name, PixFmt format, std::uint32_t width, std::uint32_t height, std::uint32_t seed) {
        auto const picture = Proc::Testing::MakeNoise(*context, format, width, height, seed);
        Proc::WritePicture(name, *picture, nullptr);
    }

    /// White above, middle grey below: a second picture, and strokes for the effects that want such.
    void MakeStrokes(std::string const& name, std::uint32_t width, std::uint32_t height) {
        auto const picture = Proc::Testing::MakeFlat(*context, PixFmt::GRAY8, width, height, {0});
        Proc::MutablePlane const plane = picture->GetMutablePlane(0);
        std::fill_n(plane.GetRow(1), width, static_cast<unsigned char>(255));
        std::fill_n(plane.GetRow(height - 2), width, static_cast<unsigned char>(128));
        Proc::WritePicture(name, *picture, nullptr, {.overwrite = true});
    }

    /// Runs the effects in this process, the outputs in the order of the reports.
    std::vector<nlohmann::json> Apply(Names const& photos, Names const& effects, std::string const& output) {
        ApplyOptions options;
        options.photos = photos;
        options.effects = effects;
        options.output = output;
        options.files.writing.overwrite = true;
        options.asJson = true;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        RunApply(options);
        testing::internal::GetCapturedStderr();
        std::istringstream lines(testing::internal::GetCapturedStdout());
        std::vector<nlohmann::json> reports;
        for (std::string line; std::getline(lines, line);) reports.push_back(nlohmann::json::parse(line));
        return reports;
    }

    static std::string ReadFile(fs::path const& file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    static std::vector<Outcome> Look(std::vector<nlohmann::json> const& reports) {
        std::vector<Outcome> outcomes;
        for (nlohmann::json report : reports) {
            std::string const file = report["outputs"].empty() ? "" : ReadFile(report["outputs"][0].get<std::string>());
            report.erase("outputs");
            outcomes.push_back({report, file});
        }
        return outcomes;
    }

    /// Every implementation of every effect that works on one photograph, with the examples of its parameters.
    static Names ListEffects() {
        EffectCatalogue const catalogue({});
        Names effects;
        for (CatalogueEntry const& entry : catalogue.GetEntries())
            for (Proc::RegisteredEffect const& implementation : entry.implementations) {
                Proc::SettingsType const& type = catalogue.GetSettingsType(entry);
                if (implementation.kind == Proc::EffectKind::VarInput && type.pictures.empty()) continue;
                std::string text = entry.name + "/" + implementation.implName + ":bypass=false";
                for (Proc::SettingsField const& field : type.describe())
                    if (!field.isOutput && !field.example.empty()) text += "," + field.name + "=" + field.example;
                if (implementation.kind == Proc::EffectKind::TwoInput) text += ",input=second.png";
                effects.push_back(text);
            }
        return effects;
    }

    Proc::ContextHandle const context = Proc::Testing::CreateContext();
    fs::path const folder;
    fs::path const before = fs::current_path();
};

TEST_F(BatchTest, EveryEffectTreatsAPhotographAsIfItWereAlone) {
    std::size_t written = 0;
    for (std::string const& effect : ListEffects()) {
        SCOPED_TRACE(effect);
        std::vector<Outcome> alone;
        for (char const* const photo : {"a.png", "b.png", "c.png"})
            for (Outcome const& outcome : Look(Apply({photo}, {effect}, "alone/"))) alone.push_back(outcome);
        std::vector<Outcome> const batch = Look(Apply({"a.png", "b.png", "c.png"}, {effect}, "batch/"));
        EXPECT_TRUE(batch == alone);
        written +=
            static_cast<std::size_t>(std::ranges::count_if(batch, [](auto const& one) { return !one.file.empty(); }));
    }
    EXPECT_GT(written, 150U);
}

TEST_F(BatchTest, EveryEffectTreatsAPieceAsIfItWereAPhotograph) {
    std::string const cut = "cutter:patch-width=24,patch-height=20";
    Names const tiles = Apply({"a.png"}, {cut}, "tile-{y}-{x}.png").at(0)["outputs"];
    ASSERT_EQ(tiles.size(), 4U);
    MakeStrokes("second.png", 24, 20);
    std::size_t compared = 0;
    for (std::string const& effect : ListEffects()) {
        if (effect.starts_with("cutter")) continue; // Its pieces have pieces.
        SCOPED_TRACE(effect);
        Names const pieces = Apply({"a.png"}, {cut, effect}, "piece-{y}-{x}.png").at(0)["outputs"];
        if (pieces.empty()) continue;
        ASSERT_EQ(pieces.size(), tiles.size());
        for (std::size_t i = 0; i < tiles.size(); ++i) {
            Apply({tiles[i]}, {effect}, "alone.png");
            EXPECT_TRUE(ReadFile(pieces[i]) == ReadFile("alone.png"));
            ++compared;
        }
    }
    EXPECT_GT(compared, 200U);
}

TEST_F(BatchTest, EverySynonymLeadsToAnEffect) {
    EffectCatalogue const catalogue({});
    for (Synonym const& synonym : GetSynonyms()) {
        EffectArgument argument = ParseEffectArgument(synonym.effect);
        bool const isOnTwo = catalogue.Get(argument.name).GetDefault().kind == Proc::EffectKind::TwoInput;
        if (isOnTwo) argument.parameters.push_back({INPUT_PARAMETER, "second.png"});
        EXPECT_NO_THROW(EffectStep(argument, catalogue, {})) << synonym.words;
    }
}

} // namespace
} // namespace Velnor::Tool::Testing
