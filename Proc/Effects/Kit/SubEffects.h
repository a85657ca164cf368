#pragma once

#include "Proc/Interfaces/IOneInputEffect.h"
#include "Proc/Interfaces/ITwoInputEffect.h"

#include <utility>
#include <vector>

namespace Velnor::Proc {

/// Whether one picture is to the other what a copy is as long as nobody has written to either: all samples are shared.
inline bool IsSame(IDataVideo const& one, IDataVideo const& other) {
    auto const areShared = [](ConstPlane const& a, ConstPlane const& b) { return a.GetData() == b.GetData(); };
    bool isSame = one.GetPixFmt() == other.GetPixFmt() && one.GetFrameFormat() == other.GetFrameFormat() &&
                  one.GetTimeStamp() == other.GetTimeStamp() && one.GetDuration() == other.GetDuration();
    for (unsigned char i = 0; i < 2; ++i) isSame = isSame && areShared(one.GetExtraAlpha(i), other.GetExtraAlpha(i));
    for (unsigned char i = 0; isSame && i < GetPlanesCount(one); ++i)
        isSame = areShared(one.GetPlane(i), other.GetPlane(i));
    return isSame;
}

/// A sub-effect as effects hold it. Whatever it is, it may write to the picture that it is given; a picture that others
/// hold too, the caller's above all, must stay as it is until nothing can fail any more. So in its place goes a copy,
/// which shares the samples until they are written. Where the copy comes back as it went, the handle keeps the picture.
template <class Kind>
class SubEffect : public Kind {
public:
    explicit SubEffect(intrusive_ptr<Kind> subEffect) : effect(std::move(subEffect)) {}

    void SetSettings(Settings const& next) override { effect->SetSettings(next); }
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
    template <class Run>
    static void RunOnOwn(DataHandle& data, Run const& run) {
        if (data == nullptr || data->GetRefCount() == 1) return run(data);
        DataHandle own = AsVideo(data).MakeCopy(CopyMode::Value);
        run(own);
        if (own == nullptr || !IsSame(std::as_const(AsVideo(own)), std::as_const(AsVideo(data)))) data = own;
    }

    intrusive_ptr<Kind> const effect;
};

class OneInputSubEffect : public SubEffect<IOneInputEffectVideo> {
public:
    using SubEffect::ProcessData;
    using SubEffect::SubEffect;
    void ProcessData(DataHandle& data) override {
        RunOnOwn(data, [this](DataHandle& own) { effect->ProcessData(own); });
    }
};

class TwoInputSubEffect : public SubEffect<ITwoInputEffectVideo> {
public:
    using SubEffect::ProcessData;
    using SubEffect::SubEffect;
    void ProcessData(DataHandle& first, ConstDataHandle const& second) override {
        RunOnOwn(first, [&](DataHandle& own) { effect->ProcessData(own, second); });
    }
};

/// Runs an effect with these settings.
inline void RunWith(IOneInputEffectVideo& effect, Settings const& settings, DataHandle& data) {
    effect.SetSettings(settings);
    effect.ProcessData(data);
}
inline void RunWith(ITwoInputEffectVideo& effect, Settings const& settings, DataHandle& first,
                    ConstDataHandle const& second) {
    effect.SetSettings(settings);
    effect.ProcessData(first, second);
}

} // namespace Velnor::Proc
