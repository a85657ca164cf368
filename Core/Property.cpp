#include "Core/Property.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Velnor::Core {
namespace {

constexpr char const* TOTAL_TIME = "Total time";
constexpr char const* COUNT = "Count";

/// Of a child; 0 where there is none, or no number.
std::int64_t GetNumber(Property const& statistics, char const* key) {
    Property const* const child = statistics.FindChild(key);
    return child == nullptr ? 0 : std::strtoll(child->GetValue().c_str(), nullptr, 10);
}

} // namespace

std::string const PerformanceTimer::IMPL_NAME = "Implementation";

std::int64_t PerformanceTimer::GetMicroseconds() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
}

Property const* Property::FindChild(std::string const& key) const {
    auto const found = std::find_if(children.begin(), children.end(), [&](auto const& c) { return c.name == key; });
    return found == children.end() ? nullptr : &*found;
}

Property& Property::SetChild(std::string const& key, std::string const& text) {
    auto found = std::find_if(children.begin(), children.end(), [&](auto const& c) { return c.name == key; });
    if (found == children.end()) found = children.insert(children.end(), Property(key));
    found->value = text;
    return *found;
}

Property& Property::Add(Property&& child) { return children.emplace_back(std::move(child)); }

std::string Property::ToText(unsigned int indent) const {
    std::string text = std::string(indent, ' ') + name + (value.empty() ? "" : ": " + value) + "\n";
    for (Property const& child : children) text += child.ToText(indent + 2);
    return text;
}

Property MakeStatistics(std::string const& name, std::int64_t totalMicroseconds, std::uint64_t count) {
    Property statistics(name);
    statistics.SetChild(TOTAL_TIME, std::to_string(totalMicroseconds));
    statistics.SetChild(COUNT, std::to_string(count));
    return statistics;
}

void AddStatistics(Property& total, Property const& next) {
    Property sum = next;
    for (char const* const key : {TOTAL_TIME, COUNT})
        if (next.FindChild(key) != nullptr)
            sum.SetChild(key, std::to_string(GetNumber(total, key) + GetNumber(next, key)));
    total = std::move(sum);
}

} // namespace Velnor::Core
