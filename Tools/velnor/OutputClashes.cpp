#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OutputNames.h"

#include <algorithm>
#include <functional>
#include <system_error>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// Files as they are known to the system, however they were written, by a number each.
class Identities {
public:
    std::size_t Get(fs::path const& file) {
        std::error_code error;
        if (fs::is_symlink(file, error)) return fs::hash_value(Resolve(file));
        fs::path const parent = file.parent_path();
        if (!isKnown || parent != lastParent) { // Mostly many in a row lie in one folder.
            lastParent = parent;
            resolvedParent = Resolve(parent.empty() ? fs::path(".") : parent);
            isKnown = true;
        }
        return fs::hash_value(resolvedParent / file.filename());
    }

private:
    static fs::path Resolve(fs::path const& file) {
        std::error_code error;
        fs::path const absolute = fs::absolute(file, error);
        fs::path known = fs::weakly_canonical(absolute, error);
        if (error) known = absolute.lexically_normal();
        return known.has_filename() ? known : known.parent_path();
    }

    fs::path lastParent;
    fs::path resolvedParent;
    bool isKnown = false;
};

struct Name {
    std::size_t identity = 0;
    std::size_t index = 0;
    auto operator<=>(Name const&) const = default;
};

/// The two that stand first of all that clash.
struct Clash {
    std::size_t first = 0;
    std::size_t second = 0;
};

std::optional<Clash> FindEqual(std::vector<Name> const& sorted) {
    std::optional<Clash> clash;
    for (std::size_t i = 1; i < sorted.size(); ++i)
        if (sorted[i].identity == sorted[i - 1].identity && (!clash || sorted[i].index < clash->second))
            clash = Clash{sorted[i - 1].index, sorted[i].index};
    return clash;
}

/// First the output, then the photograph of another that it would replace.
std::optional<Clash> FindReplaced(std::vector<Name> const& outputs, std::vector<Name> const& inputs) {
    std::optional<Clash> clash;
    for (Name const& output : outputs) {
        auto const [begin, end] = std::ranges::equal_range(inputs, output.identity, {}, &Name::identity);
        for (Name const& input : std::ranges::subrange(begin, end))
            if (input.index != output.index && (!clash || input.index < clash->second))
                clash = Clash{output.index, input.index};
    }
    return clash;
}

OutputPlan Get(PlanReader plans, std::size_t index) {
    OutputPlan plan = *plans.Next();
    while (plan.index < index) plan = *plans.Next();
    return plan;
}

} // namespace

void RequireApart(std::function<PlanReader()> const& makeReader) {
    std::vector<Name> outputs;
    std::vector<Name> inputs;
    PlanReader plans = makeReader();
    Identities ofOutputs;
    Identities ofInputs;
    for (std::optional<OutputPlan> plan = plans.Next(); plan; plan = plans.Next()) {
        outputs.push_back({ofOutputs.Get(plan->output), plan->index});
        inputs.push_back({ofInputs.Get(plan->inputs.front()), plan->index});
    }
    std::ranges::sort(outputs);
    std::ranges::sort(inputs);
    if (std::optional<Clash> const clash = FindEqual(outputs)) {
        OutputPlan const second = Get(makeReader(), clash->second);
        throw WrongCall(Get(makeReader(), clash->first).inputs.front().string() + " and " +
                        second.inputs.front().string() + " would both become " + second.output.string() +
                        "; a pattern with {index} tells them apart");
    }
    if (std::optional<Clash> const clash = FindReplaced(outputs, inputs))
        throw WrongCall("the output of " + Get(makeReader(), clash->first).inputs.front().string() + " would replace " +
                        Get(makeReader(), clash->second).inputs.front().string() +
                        ", which is a photograph of this call itself");
}

} // namespace Velnor::Tool
