#include "Proc/Interfaces/SettingsText.h"
#include "Proc/Settings/SettingsGuide.h"
#include "Tools/velnor/EffectExample.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/GalleryPage.h"
#include "Tools/velnor/LookCommands.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/RecipeCommand.h"
#include "Tools/velnor/RecipeStore.h"
#include "Tools/velnor/ShellText.h"
#include "Tools/velnor/SmallPhoto.h"
#include "Tools/velnor/Suggestions.h"
#include "Tools/velnor/TextFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;
using Fields = std::vector<Proc::SettingsField>;

constexpr std::uint32_t SIDE = 400; ///< Pixels of the longer side of each picture.

/// A folder of one's own for a moment.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = fs::temp_directory_path() / "velnor-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr)
            throw Failure(ExitCode::OutputFailed,
                          "no folder for temporary files can be made in " + fs::temp_directory_path().string());
        path = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;
    fs::path path;
};

/// The number that tells how strong an effect is: the first that is called so, else the first with a range of its own.
Proc::SettingsField const* FindStrength(Fields const& fields) {
    auto const isNumber = [](Proc::SettingsField const& field) {
        constexpr double WIDEST = 1000; // Wider ones are places and sizes.
        bool const isOwn = field.name.find('.') == std::string::npos && !field.isOutput;
        return isOwn && field.range && field.range->high - field.range->low <= WIDEST;
    };
    for (char const* const name : {"strength", "intensity", "blur", "temperature"})
        for (Proc::SettingsField const& field : fields)
            if (field.name == name && isNumber(field)) return &field;
    auto const found = std::ranges::find_if(fields, isNumber);
    return found == fields.end() ? nullptr : &*found;
}

/// Low, middle and high: parts of the way from no effect, or from the least, to the most.
std::vector<std::string> ListLevels(Proc::SettingsField const& field) {
    double const from = std::max(field.range->low, std::min(0.0, field.range->high));
    std::vector<std::string> levels;
    for (double const part : {0.25, 0.5, 0.9}) {
        double const level = from + part * (field.range->high - from);
        bool const isWhole = field.type == "integer" || field.range->high - from > 10;
        std::string const text =
            Proc::TextForm<double>::Print(isWhole ? std::round(level) : std::round(level * 100) / 100);
        if (levels.empty() || levels.back() != text) levels.push_back(text);
    }
    return levels;
}

class Gallery {
public:
    explicit Gallery(GalleryOptions const& given)
        : options(given),
          catalogue(given.plugins),
          reading(given.files.ForReading()),
          photo(ReadSmallPhoto(given.photo, SIDE, catalogue, reading)) {}

    std::string Format() {
        std::vector<GallerySection> sections = ListEffects();
        if (options.effects.empty()) sections.insert(sections.begin(), {"Recipes", ListRecipeEntries()});
        return FormatGallery(fs::path(options.photo).filename().string(), Encode(photo.picture), sections);
    }

private:
    /// The effects on one picture, by family.
    std::vector<GallerySection> ListEffects() {
        for (std::string const& name : options.effects) catalogue.Get(name);
        std::vector<GallerySection> sections;
        for (Proc::SettingsGuide const& guide : Proc::GetGuides())
            for (CatalogueEntry const& entry : catalogue.GetEntries())
                if (entry.classId == guide.classId && IsWanted(entry)) Add(sections, guide.family, entry);
        for (CatalogueEntry const& entry : catalogue.GetEntries())
            if (Proc::FindGuide(entry.classId).classId.empty() && IsWanted(entry))
                Add(sections, Proc::FindGuide(entry.classId).family, entry);
        return sections;
    }

    /// Effects that only find something out, or do nothing without a function, change no picture.
    bool IsWanted(CatalogueEntry const& entry) const {
        if (!options.effects.empty()) return std::ranges::count(options.effects, entry.name) > 0;
        bool const isOne = entry.GetDefault().kind == Proc::EffectKind::OneInput;
        Fields const fields = GetFields(entry);
        bool const tells = std::ranges::any_of(fields, &Proc::SettingsField::isOutput);
        return isOne && !tells && fields.size() > 1;
    }

    Fields GetFields(CatalogueEntry const& entry) const {
        return DescribeParameters(catalogue.GetSettingsType(entry), entry.GetDefault().kind);
    }

    void Add(std::vector<GallerySection>& sections, std::string_view family, CatalogueEntry const& entry) {
        if (sections.empty() || sections.back().title != family) sections.push_back({std::string(family), {}});
        GalleryEntry shown{entry.name, catalogue.GetSettingsType(entry).summary, {}};
        Fields const fields = GetFields(entry);
        Proc::SettingsField const* const strength = FindStrength(fields);
        if (strength == nullptr)
            shown.tiles.push_back(MakeTile("", {MakeExampleEffect(entry, fields)}, ""));
        else
            for (std::string const& level : ListLevels(*strength)) {
                std::string const parameter = strength->name + "=" + level;
                shown.tiles.push_back(MakeTile(parameter, {entry.name + ":" + parameter}, ""));
            }
        sections.back().entries.push_back(std::move(shown));
    }

    std::vector<GalleryEntry> ListRecipeEntries() {
        std::vector<GalleryEntry> entries;
        for (RecipeFile const& recipe : ListRecipes()) {
            GalleryEntry entry{recipe.name, {}, {}};
            try {
                entry.tiles.push_back(MakeTile("", UseRecipes({recipe.path.string()}, {}, {}), recipe.name));
            } catch (Failure const& failure) {
                entry.summary = failure.what();
            }
            entries.push_back(std::move(entry));
        }
        return entries;
    }

    GalleryTile MakeTile(std::string label, std::vector<std::string> const& effects, std::string const& recipe) {
        std::string const chain = recipe.empty() ? " -e " + QuoteForShell(effects.front()) : " --recipe " + recipe;
        GalleryTile tile{
            std::move(label), "velnor apply " + QuoteForShell(options.photo) + chain + " -o out.jpg", {}, {}};
        try {
            tile.jpeg = Encode(RunEffects(photo, effects, catalogue, reading));
        } catch (...) {
            tile.error = ReportCurrentException().text;
        }
        return tile;
    }

    /// The bytes of a JPEG file of the picture, no larger than the others.
    std::string Encode(Proc::DataHandle picture) {
        Proc::IEffectFactory& factory = *catalogue.GetHost().GetFactory();
        ShrinkInside(picture, SIDE, factory);
        fs::path const file = scratch.path / "picture.jpg";
        Proc::WriteOptions writing;
        writing.quality = 82;
        writing.overwrite = true;
        writing.strip = Proc::Strip::All;
        SavePicture(std::move(picture), file, false, photo.metadata.get(), writing, factory);
        return ReadTextFile(file);
    }

    GalleryOptions const& options;
    EffectCatalogue const catalogue;
    Proc::ReadOptions const reading;
    SmallPhoto const photo;
    ScratchFolder const scratch;
};

} // namespace

void WriteGallery(GalleryOptions const& options) {
    if (options.photo.empty()) throw WrongCall("gallery: no photograph is given");
    if (options.output.empty()) throw WrongCall("gallery: -o is missing; it names the page to write");
    if (!options.output.ends_with(".html"))
        throw WrongCall("gallery: -o " + options.output + ": the page is a file with the extension html");
    std::error_code ignored;
    if (!options.files.writing.overwrite && fs::exists(options.output, ignored))
        throw Failure(ExitCode::OutputFailed, options.output + " exists already; --force replaces it");
    WriteTextFile(options.output, Gallery(options).Format(), options.files.writing.overwrite);
}

} // namespace Velnor::Tool
