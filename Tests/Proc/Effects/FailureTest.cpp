// Every effect, with a factory and an allocator that fail at the first call, at the second, and so on, until the effect
// has what it needs: whoever called it finds everything as it was, and the next picture meets an effect like a new one.

#include "Proc/Effects/Kit/SubEffects.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Tests/Support/RegisteredEffects.h"

#include <cmath>
#include <optional>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;

/// Counts the calls that an effect makes, and fails at one of them.
struct Trouble {
    int calls = 0;
    int failAt = 0;

    bool IsDue() { return ++calls == failAt; }
    void Pass() {
        if (IsDue()) Fail();
    }
    [[noreturn]] void Fail() const { VELNOR_THROW(ProcException, "Call " + std::to_string(calls) + " fails."); }
};

/// What a sub-effect may have done to the picture until it fails.
void Spoil(DataHandle& data) {
    if (!data) return;
    IDataVideo& picture = AsVideo(data);
    for (unsigned char i = 0; i < GetPlanesCount(picture); ++i) {
        MutablePlane const plane = picture.GetMutablePlane(i);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
            std::fill_n(plane.GetRow(y), plane.GetWidth(), static_cast<unsigned char>(0xee));
    }
    picture.SetTimeStamp(-7);
    picture.DropExtraAlpha();
    data = nullptr;
}

/// A face in the middle of a picture, its landmarks in a ring.
Face MakeFace(FrameFormat const& frame) {
    Face face;
    face.width = static_cast<int>(frame.width / 2);
    face.height = static_cast<int>(frame.height / 2);
    face.left = face.width / 2;
    face.top = face.height / 2;
    for (std::size_t i = 0; i < face.landmarks.size(); ++i)
        face.landmarks[i] = {static_cast<float>(frame.width) * (0.5F + 0.25F * std::cos(static_cast<float>(i))),
                             static_cast<float>(frame.height) * (0.5F + 0.25F * std::sin(static_cast<float>(i)))};
    return face;
}

template <class Kind>
class FailingEffect : public SubEffect<Kind> {
public:
    FailingEffect(intrusive_ptr<Kind> real, Trouble& when) : SubEffect<Kind>(std::move(real)), trouble(when) {}

    void SetSettings(Settings const& next) override {
        trouble.Pass();
        this->effect->SetSettings(next);
    }

protected:
    Trouble& trouble;
};

struct FailingOneInput : FailingEffect<IOneInputEffectVideo> {
    using FailingEffect::FailingEffect;
    using FailingEffect::ProcessData;
    void ProcessData(DataHandle& data) override {
        if (trouble.IsDue()) {
            Spoil(data);
            trouble.Fail();
        }
        // Noise has no faces; one is put in their place.
        if (dynamic_cast<SettingsEffectFaceDetector const*>(&effect->GetSettingsBase()) == nullptr)
            effect->ProcessData(data);
        else
            faces.emplace().SetFaces({MakeFace(data->GetFrameFormat())});
    }
    Settings const& GetSettingsBase() const override { return faces ? *faces : effect->GetSettingsBase(); }

    std::optional<SettingsEffectFaceDetector> faces;
};

struct FailingTwoInput : FailingEffect<ITwoInputEffectVideo> {
    using FailingEffect::FailingEffect;
    using FailingEffect::ProcessData;
    void ProcessData(DataHandle& first, ConstDataHandle const& second) override {
        if (trouble.IsDue()) {
            Spoil(first);
            trouble.Fail();
        }
        effect->ProcessData(first, second);
    }
};

struct FailingVarInput : FailingEffect<IVarInputEffectVideo> {
    using FailingEffect::FailingEffect;
    DataHandle Process(std::vector<DataHandle> const& inputs) override {
        trouble.Pass();
        return effect->Process(inputs);
    }
};

struct FailingFactory : IEffectFactory {
    explicit FailingFactory(Trouble& when) : trouble(when), real(*PluginHost().GetFactory()) {}

    bool Has(std::string const& id, std::string const& impl) const override { return real.Has(id, impl); }
    EffectKind GetKind(std::string const& id, std::string const& impl) const override { return real.GetKind(id, impl); }
    std::vector<std::string> GetClassIds() const override { return real.GetClassIds(); }
    std::vector<std::string> GetImplNames(std::string const& id) const override { return real.GetImplNames(id); }
    intrusive_ptr<IEffect> CreateEffect(std::string const& id, std::string const& impl) override {
        trouble.Pass();
        return real.CreateEffect(id, impl);
    }
    bool HasOneInputEffect(std::string const&, std::string const&) const override { return true; }
    bool HasTwoInputEffect(std::string const&, std::string const&) const override { return true; }
    bool HasVarInputEffect(std::string const&, std::string const&) const override { return true; }
    void CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingOneInput>(real.CreateOneInputEffect(id, impl), trouble);
    }
    void CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingTwoInput>(real.CreateTwoInputEffect(id, impl), trouble);
    }
    void CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingVarInput>(real.CreateVarInputEffect(id, impl), trouble);
    }

    Trouble& trouble;
    IEffectFactory& real;
};

struct FailingContext : IEffectContext {
    explicit FailingContext(Trouble& when) : trouble(when), real(*PluginHost().GetContext()) {}

    std::uint64_t GetMemoryUsed() const override { return real.GetMemoryUsed(); }
    std::uint64_t GetMemoryPooled() const override { return real.GetMemoryPooled(); }
    void ReleaseMemory() override { real.ReleaseMemory(); }
    void WrapImage(VideoHandle* result, PixFmt format, FrameFormat const& frame, std::vector<ConstPlane> const& planes,
                   intrusive_ptr<IRefCountable const> const& owner) override {
        trouble.Pass();
        real.WrapImage(result, format, frame, planes, owner);
    }
    void CreateImage(VideoHandle* result, PixFmt format, FrameFormat const& frame) override {
        trouble.Pass();
        real.CreateImage(result, format, frame);
    }

    Trouble& trouble;
    IEffectContext& real;
};

/// All that a caller can see of a picture, the bytes between its rows included.
struct Sight {
    explicit Sight(DataHandle const& data) : object(data.get()) {
        if (!data) return;
        IDataVideo const& picture = AsVideo(ConstDataHandle(data));
        id = picture.GetId();
        format = picture.GetPixFmt();
        rectangle = picture.GetRectangle();
        attributes = {picture.GetTimeStamp(), picture.GetDuration()};
        for (unsigned char i = 0; i < GetPlanesCount(picture); ++i) Add(picture.GetPlane(i));
        for (unsigned char i = 0; i < 2; ++i)
            if (ConstPlane const alpha = picture.GetExtraAlpha(i); !alpha.IsEmpty()) Add(alpha);
    }
    friend bool operator==(Sight const&, Sight const&) = default;

private:
    void Add(ConstPlane const& plane) {
        bytes.insert(bytes.end(), plane.GetData(),
                     plane.GetData() + plane.GetStride() * static_cast<std::int64_t>(plane.GetHeight()));
    }

    IData const* object;
    std::uint64_t id = 0;
    PixFmt format = PixFmt::NONE;
    Rectangle rectangle;
    std::array<std::int64_t, 2> attributes{};
    Bytes bytes;
};

class EveryFailure : public ::testing::TestWithParam<std::tuple<RegisteredEffect, PixFmt>> {
protected:
    using Pictures = std::vector<DataHandle>;

    RegisteredEffect const& Effect() const { return std::get<0>(GetParam()); }

    intrusive_ptr<IEffect> Make(Trouble& trouble) const {
        IEffectRegistry& registry = PluginHost().GetRegistry();
        EffectFactoryFunction const find[] = {registry.FindOneInputEffect(Effect().classId, Effect().implName),
                                              registry.FindTwoInputEffect(Effect().classId, Effect().implName),
                                              registry.FindVarInputEffect(Effect().classId, Effect().implName)};
        EffectFactoryFunction const make = find[static_cast<std::size_t>(Effect().kind)];
        return make(MakeShared<FailingFactory>(trouble), MakeShared<FailingContext>(trouble));
    }

    Pictures MakeInputs(std::uint32_t width, std::uint32_t height, std::uint32_t seed) const {
        IEffectContext& context = *PluginHost().GetContext();
        bool const takesStrokes = Effect().classId == SettingsEffectGrabCut::CLASS_ID ||
                                  Effect().classId == SettingsEffectGrabCutSegmentation::CLASS_ID ||
                                  Effect().classId == "SettingsEffectAlphaInserter";
        Pictures inputs;
        for (std::uint32_t i = 0; i < (Effect().kind == EffectKind::OneInput ? 1U : 2U); ++i)
            inputs.push_back(MakeNoise(context, i > 0 && takesStrokes ? PixFmt::GRAY8 : std::get<1>(GetParam()), width,
                                       height, seed + i));
        if (takesStrokes) PaintStrokes(AsVideo(inputs[1]).GetMutablePlane(0));
        inputs[0]->SetTimeStamp(1234);
        return inputs;
    }

    /// Through the typed entries, with handles that nobody else has a share in: then an effect may write in place.
    static Pictures Run(IEffect& effect, Pictures& inputs) {
        if (auto* const one = dynamic_cast<IOneInputEffect*>(&effect)) {
            one->ProcessData(inputs[0]);
        } else if (auto* const two = dynamic_cast<ITwoInputEffect*>(&effect)) {
            two->ProcessData(inputs[0], inputs[1]);
        } else if (DataHandle const result = effect.ProcessData(inputs)) {
            return {result};
        } else {
            return inputs;
        }
        return {inputs[0]};
    }

    static std::vector<Sight> SeeAll(Pictures const& pictures) {
        std::vector<Sight> sights;
        for (DataHandle const& picture : pictures) sights.emplace_back(picture);
        return sights;
    }

    /// The samples of what an effect makes of a picture, or its refusal.
    Bytes Try(IEffect& effect, bool hasNewSize) const {
        Pictures inputs = hasNewSize ? MakeInputs(41, 34, 3) : MakeInputs(33, 21, 3);
        Bytes all;
        try {
            for (DataHandle const& result : Run(effect, inputs)) {
                if (!result) continue;
                Bytes const samples = Samples(AsVideo(ConstDataHandle(result)));
                all.push_back(static_cast<unsigned char>(result->GetPixFmt()));
                all.insert(all.end(), samples.begin(), samples.end());
            }
        } catch (ProcException const& refusal) {
            std::string const text = DescribeException(refusal);
            return {text.begin(), text.end()};
        }
        return all;
    }

    /// What a new effect makes of the next picture, with settings or with those that it begins with.
    Bytes TryFresh(Settings const* settings, bool hasNewSize) const {
        Trouble none;
        auto const effect = Make(none);
        if (settings != nullptr) effect->SetSettings(*settings);
        return Try(*effect, hasNewSize);
    }
};

TEST_P(EveryFailure, LeavesTheCallersPicturesAndANewEffectsState) {
    std::unique_ptr<Settings> const settings = TypicalSettings(*SettingsType::Find(Effect().classId));
    std::array const expected{TryFresh(settings.get(), false), TryFresh(settings.get(), true)};
    Bytes const unset = TryFresh(nullptr, true);
    for (int failAt = 1;; ++failAt) {
        SCOPED_TRACE("call " + std::to_string(failAt) + " fails");
        Trouble trouble{0, failAt};
        intrusive_ptr<IEffect> effect;
        try {
            effect = Make(trouble);
        } catch (ProcException const&) {
            continue;
        }
        try {
            effect->SetSettings(*settings);
        } catch (ProcException const&) {
            EXPECT_EQ(Try(*effect, true), unset);
            effect->SetSettings(*settings);
            EXPECT_TRUE(Try(*effect, true) == expected[1]);
            continue;
        }
        Pictures inputs = MakeInputs(33, 21, 1);
        std::vector<Sight> const before = SeeAll(inputs);
        try {
            Run(*effect, inputs);
        } catch (ProcException const&) {
            EXPECT_TRUE(SeeAll(inputs) == before);
        }
        if (trouble.calls < failAt) break;
        // Once of the size of the picture that failed, once of another.
        bool const hasNewSize = failAt % 2 == 0;
        ASSERT_TRUE(Try(*effect, hasNewSize) == expected[hasNewSize ? 1 : 0]);
    }
}

std::string FailureName(::testing::TestParamInfo<std::tuple<RegisteredEffect, PixFmt>> const& info) {
    auto const& [effect, format] = info.param;
    return effect.classId + "_" + effect.implName + "_" + std::string(PixFmtDescription::Find(format)->name);
}

INSTANTIATE_TEST_SUITE_P(Registry, EveryFailure,
                         ::testing::Combine(::testing::ValuesIn(PluginHost().GetEffects()),
                                            ::testing::Values(PixFmt::RGB24, PixFmt::YUV420P, PixFmt::PAL8)),
                         FailureName);

/// The promise costs no copy: what works in place writes to the samples of a picture that nobody else holds.
TEST(Failure, IsNoReasonToCopyAPictureThatNobodyElseHolds) {
    std::vector<std::pair<std::string, PixFmt>> const cases{
        {"WhiteBalance", PixFmt::BGR24},         {"ColorBalanceAuto", PixFmt::RGB24}, {"ReplaceChroma", PixFmt::RGBA},
        {"BalanceLuma", PixFmt::RGB24},          {"ReduceLocalLuma", PixFmt::RGB24},  {"BlendPalette", PixFmt::RGBA},
        {"GradientPosterize", PixFmt::YUVA444P}, {"ColorBalance", PixFmt::YUV420P},   {"Vibrance", PixFmt::RGB24},
        {"SplitToning", PixFmt::RGBA},           {"NoiseVideo", PixFmt::RGB24},       {"ImageBlender", PixFmt::YUV420P},
        {"AlphaInserter", PixFmt::RGBA}};
    for (auto const& [name, format] : cases) {
        SCOPED_TRACE(name);
        auto const effect = PluginHost().GetFactory()->CreateEffect("SettingsEffect" + name, ImplNames::DEFAULT);
        effect->SetSettings(*TypicalSettings(effect->GetSettingsBase().GetType()));
        IEffectContext& context = *PluginHost().GetContext();
        DataHandle data = MakeNoise(context, format, 20, 10);
        DataHandle const second = MakeNoise(context, name == "AlphaInserter" ? PixFmt::GRAY8 : format, 20, 10);
        auto const samplesOf = [](DataHandle const& picture) { return AsVideo(ConstDataHandle(picture)).GetPlane(0); };
        unsigned char const* const before = samplesOf(data).GetData();
        if (auto* const one = dynamic_cast<IOneInputEffect*>(effect.get()))
            one->ProcessData(data);
        else
            dynamic_cast<ITwoInputEffect&>(*effect).ProcessData(data, second);
        EXPECT_EQ(samplesOf(data).GetData(), before);
    }
}

TEST(Failure, OfACustomFunctionLeavesTheHandle) {
    auto const effect =
        PluginHost().GetFactory()->CreateOneInputEffect(SettingsEffectCustom::CLASS_ID, ImplNames::VELNOR);
    effect->SetSettings(SettingsEffectCustom([](VideoHandle& picture) {
        picture = nullptr;
        VELNOR_THROW(ProcException, "fails");
    }));
    DataHandle data = MakeNoise(*PluginHost().GetContext(), PixFmt::RGB24, 3, 3);
    Sight const before(data);
    EXPECT_THROW(effect->ProcessData(data), ProcException);
    EXPECT_TRUE(Sight(data) == before);
}

} // namespace
} // namespace Velnor::Proc
