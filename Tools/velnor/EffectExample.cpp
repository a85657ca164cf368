#include "Tools/velnor/EffectExample.h"

#include "Proc/Settings/SettingsGuide.h"
#include "Tools/velnor/ShellText.h"

#include <algorithm>

namespace Velnor::Tool {
namespace {

using Fields = std::vector<Proc::SettingsField>;

std::string TypeParameters(Fields const& fields) {
    std::string typed;
    auto const add = [&](Proc::SettingsField const& field) {
        typed += (typed.empty() ? "" : ",") + field.name + "=" + field.example;
    };
    for (Proc::SettingsField const& field : fields)
        if (!field.isOutput && field.example != field.defaultText) add(field);
    bool const hasFirst = fields.size() > 1 && !fields.front().isOutput && !fields.front().example.empty();
    if (typed.empty() && hasFirst) add(fields.front());
    return typed;
}

std::string TypeGuided(Proc::SettingsGuide const& guide) {
    std::string const typed(guide.parameters);
    return guide.furtherExample.empty() ? typed
                                        : typed + "," + INPUT_PARAMETER + "=" + std::string(guide.furtherExample);
}

bool TakesMask(Proc::SettingsType const& type) {
    return std::ranges::count(type.pictures, Proc::PictureRole::Mask) > 0;
}

/// JPEG, unless there is transparency to keep, or a mask.
std::string NameOutput(CatalogueEntry const& entry, Proc::SettingsType const& type, std::string const& photo) {
    bool const cuts = entry.GetDefault().kind == Proc::EffectKind::VarInput && type.pictures.size() == 1;
    if (cuts) return "out/{name}-{y}-{x}.{ext}";
    return TakesMask(type) || photo.ends_with(".png") ? "out.png" : "out.jpg";
}

} // namespace

std::string MakeExampleEffect(CatalogueEntry const& entry, Fields const& fields) {
    Proc::SettingsGuide const& guide = Proc::FindGuide(entry.classId);
    std::string const typed = guide.parameters.empty() ? TypeParameters(fields) : TypeGuided(guide);
    return typed.empty() ? entry.name : entry.name + ":" + typed;
}

std::string MakeExample(CatalogueEntry const& entry, Proc::SettingsType const& type, Fields const& fields) {
    std::string const photo(Proc::FindGuide(entry.classId).photo);
    return "velnor apply " + photo + " -e " + QuoteForShell(MakeExampleEffect(entry, fields)) + " -o " +
           QuoteForShell(NameOutput(entry, type, photo));
}

} // namespace Velnor::Tool
