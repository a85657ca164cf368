#pragma once

#include "Core/Export.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace Velnor::Core {

/// A named node of a statistics tree: a text value and children in the order in which they were added.
class VELNOR_API Property {
public:
    explicit Property(std::string const& nodeName) : name(nodeName) {}

    std::string const& GetName() const { return name; }
    std::string const& GetValue() const { return value; }
    std::vector<Property> const& GetChildren() const { return children; }
    void SetValue(std::string const& text) { value = text; }

    /// Gives the child `key` a value, adding the child when there is none. Returns that child.
    Property& SetChild(std::string const& key, std::string const& text);
    Property& Add(Property&& child); ///< Appends a child, even when one of the name exists. Returns it.
    Property const* FindChild(std::string const& key) const; ///< The first child of that name, or null.

    std::string ToText(unsigned int indent = 0) const; ///< One "name: value" line a node, children indented by two.

private:
    std::string name;
    std::string value;
    std::vector<Property> children;
};

/// Statistics of one function: children "Total time" (microseconds) and "Count".
VELNOR_API Property MakeStatistics(std::string const& name, std::int64_t totalMicroseconds, std::uint64_t count);

/// Makes the statistics of a function those of its `next` run as well: time and count are summed up, all else is the
/// next one's.
VELNOR_API void AddStatistics(Property& total, Property const& next);

/// Time since construction.
class VELNOR_API PerformanceTimer {
public:
    /// Key under which a statistics node records the implementation name.
    static std::string const IMPL_NAME;

    std::int64_t GetMicroseconds() const;

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace Velnor::Core
