#include "Proc/Host/Factory.h"

#include "Proc/Host/Context.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace Velnor::Proc {
namespace {

using namespace Testing;

/// An effect that only tells which implementation it is.
template <class Kind>
class Marked : public Kind {
public:
    Marked(std::string const& effectMark, FactoryHandle const& handle) : mark(effectMark), factory(handle) {}

    void SetSettings(Settings const&) override {}
    void Flush() override {}
    void ResetSettings() override {}
    Core::Property GetStatistic() override { return Core::Property(mark); }
    Settings const& GetSettingsBase() const override { return settings; }

private:
    std::string const mark;
    FactoryHandle const factory;
    SettingsEffectEmpty settings;
};

class OneInput : public Marked<IOneInputEffectVideo> {
public:
    using Marked::Marked;
    using Marked::ProcessData;
    void ProcessData(DataHandle&) override {}
};

class TwoInput : public Marked<ITwoInputEffectVideo> {
public:
    using Marked::Marked;
    using Marked::ProcessData;
    void ProcessData(DataHandle&, ConstDataHandle const&) override {}
};

intrusive_ptr<IEffect> MakeA(FactoryHandle const& factory, ContextHandle const&) {
    return MakeShared<OneInput>("A", factory);
}
intrusive_ptr<IEffect> MakeB(FactoryHandle const& factory, ContextHandle const&) {
    return MakeShared<OneInput>("B", factory);
}
intrusive_ptr<IEffect> MakeTwo(FactoryHandle const& factory, ContextHandle const&) {
    return MakeShared<TwoInput>("Two", factory);
}
intrusive_ptr<IEffect> MakeNothing(FactoryHandle const&, ContextHandle const&) { return {}; }
intrusive_ptr<IEffect> MakeByFactory(FactoryHandle const& factory, ContextHandle const& context) {
    EXPECT_TRUE(context);
    return factory->CreateOneInputEffect("Plain", ImplNames::DEFAULT);
}

class FactoryTest : public testing::Test {
protected:
    FactoryTest() {
        registry->RegisterOneInputEffect("Plain", "First", MakeA, nullptr);
        registry->RegisterTwoInputEffect("Pair", "Velnor", MakeTwo, nullptr);
        registry->RegisterOneInputEffect("Named", "First", MakeA, nullptr);
        registry->RegisterOneInputEffect("Named", "Default", MakeB, nullptr);
        registry->RegisterTwoInputEffect("Mixed", "First", MakeTwo, nullptr);
        registry->RegisterOneInputEffect("Mixed", "Second", MakeB, nullptr);
        registry->RegisterOneInputEffect("Null", "First", MakeNothing, nullptr);
        registry->RegisterOneInputEffect("Wrong", "First", MakeTwo, nullptr);
    }

    std::string MarkOf(std::string const& classId, std::string const& implName) {
        auto const effect = factory->CreateOneInputEffect(classId, implName);
        EXPECT_EQ(effect->GetRefCount(), 1U);
        return effect->GetStatistic().GetName();
    }
    std::string ErrorOfOne(std::string const& classId, std::string const& implName) {
        return RefusalOf([&] { factory->CreateOneInputEffect(classId, implName); });
    }

    std::shared_ptr<Registry> registry = std::make_shared<Registry>("host");
    FactoryHandle factory = MakeShared<Factory>(registry, MakeShared<Context>());
};

TEST_F(FactoryTest, DefaultIsWhatIsNamedSoElseTheFirstOfTheKind) {
    EXPECT_EQ(MarkOf("Plain", "First"), "A");
    EXPECT_EQ(MarkOf("Plain", ImplNames::DEFAULT), "A");
    EXPECT_EQ(MarkOf("Named", ImplNames::DEFAULT), "B");
    EXPECT_EQ(MarkOf("Mixed", ImplNames::DEFAULT), "B");
    EXPECT_EQ(factory->CreateEffect("Mixed", ImplNames::DEFAULT)->GetStatistic().GetName(), "Two");
    EXPECT_EQ(factory->CreateTwoInputEffect("Pair", ImplNames::DEFAULT)->GetStatistic().GetName(), "Two");
    EXPECT_NE(factory->CreateEffect("Plain", "First"), factory->CreateEffect("Plain", "First"));
}

TEST_F(FactoryTest, TellsWhatThereIs) {
    EXPECT_EQ(factory->GetClassIds(), (std::vector<std::string>{"Plain", "Pair", "Named", "Mixed", "Null", "Wrong"}));
    EXPECT_EQ(factory->GetImplNames("Named"), (std::vector<std::string>{"First", "Default"}));
    EXPECT_TRUE(factory->GetImplNames("Unknown").empty());
    EXPECT_EQ(factory->GetKind("Pair", ImplNames::DEFAULT), EffectKind::TwoInput);
    EXPECT_EQ(factory->GetKind("Mixed", "Second"), EffectKind::OneInput);
    EXPECT_TRUE(factory->Has("Pair", "Velnor") && factory->Has("Pair", ImplNames::DEFAULT));
    EXPECT_FALSE(factory->Has("Pair", "First") || factory->Has("Unknown", ImplNames::DEFAULT));
    EXPECT_TRUE(factory->HasTwoInputEffect("Pair", "Velnor") && factory->HasOneInputEffect("Mixed", "Default"));
    EXPECT_FALSE(factory->HasOneInputEffect("Pair", "Velnor") || factory->HasVarInputEffect("Mixed", "Default"));
}

TEST_F(FactoryTest, FailuresNameWhatIsRegistered) {
    EXPECT_EQ(ErrorOfOne("Unknown", "Velnor"),
              "No effect \"Unknown\" is registered; is the plug-in that has it loaded?");
    EXPECT_EQ(ErrorOfOne("Named", "Other"),
              "Effect \"Named\" has no implementation \"Other\"; registered: First (one-input), Default (one-input).");
    EXPECT_EQ(ErrorOfOne("Pair", "Velnor"), "Effect \"Pair\" is a two-input effect as implementation \"Velnor\", not a "
                                            "one-input one; registered: Velnor (two-input).");
    EXPECT_EQ(ErrorOfOne("Null", "Default"),
              "The factory function of effect \"Null\", implementation \"First\" of host, returned null.");
    EXPECT_EQ(ErrorOfOne("Wrong", "First"), "The factory function of effect \"Wrong\", implementation \"First\" of "
                                            "host, is registered as one-input and made another kind.");
    EXPECT_NE(RefusalOf([&] { factory->GetKind("Unknown", "Velnor"); }), "");
    EXPECT_NE(RefusalOf([&] { factory->CreateVarInputEffect("Plain", "Default"); }), "");

    intrusive_ptr<IOneInputEffectVideo> kept = factory->CreateOneInputEffect("Plain", "First");
    IOneInputEffectVideo* const before = kept.get();
    RefusalOf([&] { factory->CreateOneInputEffect(&kept, "Unknown", "First"); });
    EXPECT_EQ(kept.get(), before);
}

TEST_F(FactoryTest, EffectsOutliveTheHandles) {
    registry->RegisterOneInputEffect("Nested", "First", MakeByFactory, nullptr);
    std::weak_ptr<Registry> const watched = registry;
    intrusive_ptr<IEffect> effect = factory->CreateEffect("Nested", ImplNames::DEFAULT);
    factory.reset();
    registry.reset();
    EXPECT_FALSE(watched.expired());
    effect.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(FactoryTest, RegistersAPairOnce) {
    std::size_t const count = registry->GetAll().size();
    EXPECT_EQ(RefusalOf([&] { registry->RegisterVarInputEffect("Plain", "First", MakeB, nullptr); }),
              "Effect \"Plain\" has an implementation \"First\" already, registered by host.");
    EXPECT_EQ(RefusalOf([&] { registry->RegisterOneInputEffect("Plain", "Second", nullptr, nullptr); }),
              "Effect \"Plain\" has no factory function for its implementation \"Second\": the pointer is null.");
    EXPECT_EQ(registry->GetAll().size(), count);
    EXPECT_EQ(registry->FindOneInputEffect("Plain", "First"), &MakeA);
    EXPECT_EQ(registry->FindVarInputEffect("Plain", "First"), nullptr);
    EXPECT_EQ(registry->FindOneInputEffect("Plain", ImplNames::DEFAULT), nullptr);
}

TEST_F(FactoryTest, StagedEffectsArriveTogetherOrNotAtAll) {
    Registry staged("plug-in", registry.get());
    EXPECT_EQ(staged.FindTwoInputEffect("Pair", "Velnor"), &MakeTwo) << "it sees the registry below";
    staged.RegisterOneInputEffect("New", "First", MakeA, nullptr);
    staged.RegisterOneInputEffect("Newer", "First", MakeB, nullptr);
    EXPECT_FALSE(factory->Has("New", "First"));

    // Another plug-in comes first: nothing of this one arrives.
    registry->RegisterOneInputEffect("Newer", "First", MakeA, nullptr);
    EXPECT_NE(RefusalOf([&] { registry->Merge(staged); }), "");
    EXPECT_FALSE(factory->Has("New", "First"));

    Registry next("plug-in", registry.get());
    next.RegisterOneInputEffect("New", "First", MakeA, nullptr);
    registry->Merge(next);
    EXPECT_EQ(registry->GetAll().back().effect.origin, "plug-in");
    EXPECT_EQ(MarkOf("New", "Default"), "A");
}

TEST_F(FactoryTest, ThreadsRegisterAndCreate) {
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id)
        threads.emplace_back([this, id] {
            for (int i = 0; i < 25; ++i) {
                std::string const name = std::to_string(id) + "-" + std::to_string(i);
                registry->RegisterOneInputEffect(name, "First", MakeB, nullptr);
                EXPECT_TRUE(factory->CreateOneInputEffect(name, ImplNames::DEFAULT));
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(registry->GetAll().size(), 108U);
}

} // namespace
} // namespace Velnor::Proc
