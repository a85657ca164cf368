#include "Tools/check/Failing.h"

#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

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

/// An effect in front of another, to which all is passed on.
template <class Kind>
class FailingEffect : public Kind {
public:
    FailingEffect(intrusive_ptr<Kind> real, Trouble& when) : effect(std::move(real)), trouble(when) {}

    using Kind::ProcessData;
    void SetSettings(Settings const& next) override {
        trouble.Pass();
        effect->SetSettings(next);
    }
    void Flush() override { effect->Flush(); }
    void ResetSettings() override { effect->ResetSettings(); }
    Core::Property GetStatistic() override { return effect->GetStatistic(); }
    Settings const& GetSettingsBase() const override { return effect->GetSettingsBase(); }
    void SetProgressController(intrusive_ptr<Core::IProgressController> const& controller) override {
        effect->SetProgressController(controller);
    }
    TimeToProgress const& GetProgress() const override { return std::as_const(*effect).GetProgress(); }
    TimeToProgress& GetProgress() override { return effect->GetProgress(); }
    void SetProgress(TimeToProgress const& next) override { effect->SetProgress(next); }

protected:
    void PassWith(DataHandle& data) {
        if (!trouble.IsDue()) return;
        Spoil(data);
        trouble.Fail();
    }

    intrusive_ptr<Kind> const effect;
    Trouble& trouble;
};

struct FailingOneInput : FailingEffect<IOneInputEffectVideo> {
    using FailingEffect::FailingEffect;
    using FailingEffect::ProcessData;
    void ProcessData(DataHandle& data) override {
        PassWith(data);
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
        PassWith(first);
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

class FailingFactory : public IEffectFactory {
public:
    FailingFactory(FactoryHandle factory, Trouble& when) : real(std::move(factory)), trouble(when) {}

    bool Has(std::string const& id, std::string const& impl) const override { return real->Has(id, impl); }
    EffectKind GetKind(std::string const& id, std::string const& impl) const override {
        return real->GetKind(id, impl);
    }
    std::vector<std::string> GetClassIds() const override { return real->GetClassIds(); }
    std::vector<std::string> GetImplNames(std::string const& id) const override { return real->GetImplNames(id); }
    bool HasOneInputEffect(std::string const& id, std::string const& impl) const override {
        return real->HasOneInputEffect(id, impl);
    }
    bool HasTwoInputEffect(std::string const& id, std::string const& impl) const override {
        return real->HasTwoInputEffect(id, impl);
    }
    bool HasVarInputEffect(std::string const& id, std::string const& impl) const override {
        return real->HasVarInputEffect(id, impl);
    }
    intrusive_ptr<IEffect> CreateEffect(std::string const& id, std::string const& impl) override {
        trouble.Pass();
        return real->CreateEffect(id, impl);
    }
    void CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingOneInput>(real->CreateOneInputEffect(id, impl), trouble);
    }
    void CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingTwoInput>(real->CreateTwoInputEffect(id, impl), trouble);
    }
    void CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& id,
                              std::string const& impl) override {
        trouble.Pass();
        *result = MakeShared<FailingVarInput>(real->CreateVarInputEffect(id, impl), trouble);
    }

private:
    FactoryHandle const real;
    Trouble& trouble;
};

class FailingContext : public IEffectContext {
public:
    FailingContext(ContextHandle context, Trouble& when) : real(std::move(context)), trouble(when) {}

    std::uint64_t GetMemoryUsed() const override { return real->GetMemoryUsed(); }
    std::uint64_t GetMemoryPooled() const override { return real->GetMemoryPooled(); }
    void ReleaseMemory() override { real->ReleaseMemory(); }
    void WrapImage(VideoHandle* result, PixFmt format, FrameFormat const& frame, std::vector<ConstPlane> const& planes,
                   intrusive_ptr<IRefCountable const> const& owner) override {
        trouble.Pass();
        real->WrapImage(result, format, frame, planes, owner);
    }
    void CreateImage(VideoHandle* result, PixFmt format, FrameFormat const& frame) override {
        trouble.Pass();
        real->CreateImage(result, format, frame);
    }

private:
    ContextHandle const real;
    Trouble& trouble;
};

} // namespace

void Trouble::Fail() const { VELNOR_THROW(ProcException, "Call " + std::to_string(calls) + " fails."); }

FactoryHandle MakeFailingFactory(FactoryHandle const& real, Trouble& trouble) {
    return MakeShared<FailingFactory>(real, trouble);
}

ContextHandle MakeFailingContext(ContextHandle const& real, Trouble& trouble) {
    return MakeShared<FailingContext>(real, trouble);
}

} // namespace Velnor::Proc::Check
