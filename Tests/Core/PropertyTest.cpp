#include "Core/Property.h"

#include <gtest/gtest.h>

namespace Velnor::Core {
namespace {

TEST(Property, SetChildReplacesAndAddAppends) {
    Property root("effect");
    root.SetChild("Count", "1");
    root.SetChild("Count", "2").SetChild("inner", "x");
    root.Add(Property("Count")).SetValue("3");
    ASSERT_EQ(root.GetChildren().size(), 2U);
    EXPECT_EQ(root.FindChild("Count")->GetValue(), "2");
    EXPECT_EQ(root.GetChildren()[1].GetValue(), "3");
    EXPECT_EQ(root.FindChild("count"), nullptr);
    root.SetChild("Count", "4");
    EXPECT_EQ(root.GetChildren()[1].GetValue(), "3");
    EXPECT_EQ(root.ToText(), "effect\n  Count: 4\n    inner: x\n  Count: 3\n");
}

TEST(Property, StatisticsHoldBothNumbersWhole) {
    Property const statistics = MakeStatistics("ProcessData", -1, 18446744073709551615U);
    EXPECT_EQ(statistics.GetName(), "ProcessData");
    EXPECT_EQ(statistics.ToText(), "ProcessData\n  Total time: -1\n  Count: 18446744073709551615\n");
}

} // namespace
} // namespace Velnor::Core
