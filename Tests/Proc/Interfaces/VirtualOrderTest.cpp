#include "Proc/Interfaces/IEffectContext.h"
#include "Proc/Interfaces/IEffectFactory.h"
#include "Proc/Interfaces/IEffectRegistry.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Velnor::Proc {
namespace {

/// Slot of a virtual operation in its class's table, read from the pointer to member: the Itanium C++ ABI (section 2.3)
/// keeps 1 + the slot's offset in bytes there for a virtual function.
template <class Pointer>
int Slot(Pointer operation) {
    std::ptrdiff_t word = 0;
    static_assert(sizeof operation >= sizeof word);
    std::memcpy(&word, &operation, sizeof word);
    EXPECT_EQ(word & 1, 1) << "not virtual";
    return static_cast<int>((word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

/// Position counted from one, given one operation whose position is known: what a base or the destructor's two entries
/// take before it does not matter.
template <class Known, class Pointer>
int Position(Known known, int position, Pointer operation) {
    return Slot(operation) - Slot(known) + position;
}

TEST(VirtualOrder, Data) {
    auto const position = [](auto operation) { return Position(&IData::GetDataKind, 2, operation); };
    EXPECT_EQ(position(&IData::GetTimeStamp), 5);
    EXPECT_EQ(position(&IData::SetTimeStamp), 6);
    EXPECT_EQ(position(&IData::GetDuration), 7);
    EXPECT_EQ(position(&IData::SetDuration), 8);
    EXPECT_EQ(position(&IData::GetFrameFormat), 12);
    EXPECT_EQ(position(&IData::GetPixFmt), 15);
    EXPECT_EQ(position(&IDataVideo::GetRectangle), 16);
    EXPECT_EQ(position(&IDataVideo::GetMutablePlane), 21);
    EXPECT_EQ(position(&IDataVideo::GetPlane), 22);
    EXPECT_EQ(position(&IDataVideo::MakeCopy), 26);
    EXPECT_EQ(position(&IDataVideo::Relabel), 27);
}

TEST(VirtualOrder, Context) {
    using Create = void (IEffectContext::*)(VideoHandle*, PixFmt, FrameFormat const&);
    Create const create = &IEffectContext::CreateImage;
    EXPECT_EQ(Position(&IEffectContext::GetMemoryUsed, 2, create), 6);
}

TEST(VirtualOrder, Registry) {
    auto const position = [](auto operation) { return Position(&IEffectRegistry::FindOneInputEffect, 2, operation); };
    EXPECT_EQ(Slot(&IEffectRegistry::FindOneInputEffect), 2); // right after the destructor's two entries
    EXPECT_EQ(position(&IEffectRegistry::RegisterOneInputEffect), 3);
    EXPECT_EQ(position(&IEffectRegistry::RegisterTwoInputEffect), 5);
    EXPECT_EQ(position(&IEffectRegistry::RegisterVarInputEffect), 7);
}

TEST(VirtualOrder, Factory) {
    using Id = std::string const&;
    using One = void (IEffectFactory::*)(intrusive_ptr<IOneInputEffectVideo>*, Id, Id);
    using Two = void (IEffectFactory::*)(intrusive_ptr<ITwoInputEffectVideo>*, Id, Id);
    One const one = &IEffectFactory::CreateOneInputEffect;
    Two const two = &IEffectFactory::CreateTwoInputEffect;
    EXPECT_EQ(Position(&IEffectFactory::Has, 2, one), 8);
    EXPECT_EQ(Position(&IEffectFactory::Has, 2, two), 12);
}

TEST(VirtualOrder, Effect) {
    // Counted from zero, the destructor being 0.
    auto const position = [](auto operation) { return Position(&IEffect::SetSettings, 1, operation); };
    using Inputs = std::vector<DataHandle> const&;
    using Vector = DataHandle (IEffect::*)(Inputs);
    using ProgressConst = TimeToProgress const& (IEffect::*)() const;
    using Progress = TimeToProgress& (IEffect::*)();
    EXPECT_EQ(position(&IEffect::Flush), 2);
    EXPECT_EQ(position(&IEffect::ResetSettings), 3);
    EXPECT_EQ(position(static_cast<Vector>(&IEffect::ProcessData)), 4);
    EXPECT_EQ(position(&IEffect::GetStatistic), 5);
    EXPECT_EQ(position(&IEffect::GetSettingsBase), 6);
    EXPECT_EQ(position(&IEffect::SetProgressController), 7);
    EXPECT_EQ(position(static_cast<ProgressConst>(&IEffect::GetProgress)), 8);
    EXPECT_EQ(position(static_cast<Progress>(&IEffect::GetProgress)), 9);
    EXPECT_EQ(position(&IEffect::SetProgress), 10);

    using One = void (IOneInputEffect::*)(DataHandle&);
    using Two = void (ITwoInputEffect::*)(DataHandle&, ConstDataHandle const&);
    EXPECT_EQ(position(static_cast<One>(&IOneInputEffect::ProcessData)), 11);
    EXPECT_EQ(position(static_cast<Two>(&ITwoInputEffect::ProcessData)), 11);
    EXPECT_EQ(position(&IVarInputEffect::Process), 11);
}

} // namespace
} // namespace Velnor::Proc
