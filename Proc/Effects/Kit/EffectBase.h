#pragma once

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Kit/SubEffects.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/IEffectRegistry.h"
#include "Proc/Interfaces/ImplNames.h"

#include <glog/logging.h>

#include <concepts>
#include <string>
#include <utility>

namespace Velnor::Proc {

/// What is common to all effects: typed settings, statistics, log lines, creation of sub-effects. A concrete effect
/// derives from one of the three bases at the end of this file (or from EffectBaseCSC), creates its sub-effects in its
/// constructor and implements ProcessInternal. Errors pass through: the picture is then not counted, no " done" is
/// logged, and the caller's handle and picture are as they were. For that the work is done on a handle of the base's
/// own, sub-effects never see the caller's picture but a copy of it (see SubEffect), and an effect writes to the
/// picture that it was given in its last step alone, when nothing can fail any more.
template <class Interface, class SettingsClass>
class EffectBase : public Interface {
public:
    EffectBase(FactoryHandle const& effectFactory, ContextHandle const& effectContext,
               std::string const& implementation = ImplNames::VELNOR)
        : factory(effectFactory), context(effectContext), implName(implementation) {}

    /// Drops what sub-effects keep between frames; forwarded by the bases that own converters.
    virtual void SubEffectHook() {}

    /// Nothing happens when the settings are equal to the current ones. Otherwise ResetSettings runs first, still
    /// seeing the old settings: an override marks stale what depends on them.
    virtual void SetSettings(SettingsClass const& next) {
        if constexpr (std::equality_comparable<SettingsClass>) {
            if (settings == next) return;
        }
        ReplaceSettings(next);
    }

    /// Adds an effect's own nodes to its statistics.
    virtual void AddStatistic(Core::Property& /*statistics*/) {}

    void SetSettings(Settings const& next) override { SetSettings(dynamic_cast<SettingsClass const&>(next)); }
    void Flush() override {}
    void ResetSettings() override { settings = SettingsClass(); }
    Settings const& GetSettingsBase() const override { return settings; }

    Core::Property GetStatistic() override {
        // The name is that under which existing collectors of statistics know the function, not this compiler's.
        std::string const functionName =
            "Velnor::Proc::EffectBase<class Velnor::Proc::" + std::string(Interface::CLASS_NAME) +
            ",class Velnor::Proc::" + std::string(SettingsClass::CLASS_NAME) + ">::GetStatistic";
        Core::Property statistics = Core::MakeStatistics(functionName, statTotal, processedCount);
        statistics.SetChild(Core::PerformanceTimer::IMPL_NAME, GetInstanceName());
        AddStatistic(statistics);
        return statistics;
    }

protected:
    /// The prefix of log lines and the implementation name in the statistics.
    std::string GetInstanceName() const { return SettingsClass::CLASS_ID + "_" + implName; }

    /// Resets, then assigns. The new settings are copied first: they may be this effect's own object.
    void ReplaceSettings(SettingsClass const& next) {
        SettingsClass const kept = next;
        IEffect& effect = *this;
        effect.ResetSettings();
        settings = kept;
    }

    /// A sub-effect, configured at once: there is no other way to get one.
    template <class SubSettings>
    intrusive_ptr<IOneInputEffectVideo> MakeOneInput(SubSettings const& subSettings,
                                                     std::string const& impl = ImplNames::DEFAULT) const {
        auto const effect = factory->CreateOneInputEffect(SubSettings::CLASS_ID, impl);
        effect->SetSettings(subSettings);
        return MakeShared<OneInputSubEffect>(effect);
    }
    template <class SubSettings>
    intrusive_ptr<ITwoInputEffectVideo> MakeTwoInput(SubSettings const& subSettings,
                                                     std::string const& impl = ImplNames::DEFAULT) const {
        auto const effect = factory->CreateTwoInputEffect(SubSettings::CLASS_ID, impl);
        effect->SetSettings(subSettings);
        return MakeShared<TwoInputSubEffect>(effect);
    }
    template <class SubSettings>
    intrusive_ptr<IVarInputEffectVideo> MakeVarInput(SubSettings const& subSettings,
                                                     std::string const& impl = ImplNames::DEFAULT) const {
        auto effect = factory->CreateVarInputEffect(SubSettings::CLASS_ID, impl);
        effect->SetSettings(subSettings);
        return effect;
    }

    /// The picture to write to in place, as the last step of the work: the one in the handle where nobody but the
    /// caller holds it, else a copy that takes its place.
    IDataVideo& OwnPicture(DataHandle& work) const {
        if (!IsAlone(work)) work = AsVideo(work).MakeCopy(CopyMode::Independent);
        return AsVideo(work);
    }

    /// Replaces the picture by a copy to write to in place, as the last step of the work. A picture that nobody but the
    /// caller holds is given up for it at once, so that the samples are the copy's own and need not be duplicated.
    /// @param prepare  what can fail and must be done on the copy before
    template <class Prepare>
    IDataVideo& ReplacePicture(DataHandle& work, Prepare const& prepare) const {
        bool const isGivenUp = IsCallers(work) && IsAlone(work) && !work->IsShared();
        VideoHandle const copy = AsVideo(work).MakeCopy(CopyMode::Independent);
        prepare(*copy);
        work = copy;
        if (isGivenUp) *callersHandle = copy;
        return *copy;
    }
    IDataVideo& ReplacePicture(DataHandle& work) const {
        return ReplacePicture(work, [](IDataVideo&) {});
    }

    /// Whether nobody but the caller, or this effect, holds the picture.
    bool IsAlone(DataHandle const& work) const { return work->GetRefCount() == (IsCallers(work) ? 2U : 1U); }

    bool IsCallers(DataHandle const& work) const { return callersHandle != nullptr && work == *callersHandle; }

    /// Does the work on a handle of its own, which the caller's becomes when all is done.
    template <class Work>
    void WorkOn(DataHandle& data, Work const& doWork) {
        struct Reset {
            DataHandle*& handle;
            ~Reset() { handle = nullptr; }
        } const reset{callersHandle};
        callersHandle = &data;
        DataHandle work = data;
        doWork(work);
        data = std::move(work);
    }

    /// Logs, skips the work when the settings are empty, refuses what their fields do not accept, counts. Returns
    /// whether the work was done.
    template <class Work>
    bool Run(Work const& work) {
        VLOG(VERBOSE_LEVEL) << GetInstanceName() << " starts";
        if (settings.IsEmpty()) {
            VLOG(VERBOSE_LEVEL) << GetInstanceName() << " is empty";
            return false;
        }
        RequireAccepted(settings);
        work();
        ++processedCount;
        VLOG(VERBOSE_LEVEL) << GetInstanceName() << " done";
        return true;
    }

    /// Throws EffectException with the name and value of the first field that the effect does not accept.
    static void RequireAccepted(SettingsClass const& wanted) {
        std::string const refusal = wanted.FindRefusal();
        if (!refusal.empty()) VELNOR_THROW(EffectException, refusal);
    }

    static void RequirePicture(IData const* data) {
        if (data != nullptr) return;
        // Under the contract's name of this source, which errors and log lines keep.
        boost::source_location const here("Proc/Effects/Lumetta/EffectBase", __LINE__, BOOST_CURRENT_FUNCTION);
        Velnor::Details::ThrowDescribed(EffectException(), "A picture is needed, the handle is null.", here);
    }

    static constexpr int VERBOSE_LEVEL = 30;

    FactoryHandle factory; ///< For the Make operations above, which alone give sub-effects that are configured.
    ContextHandle context;
    SettingsClass settings;

private:
    DataHandle* callersHandle = nullptr; ///< The caller's handle to the picture in work; null between works.
    std::string implName;
    std::int64_t statTotal = 0; ///< Reported, and not measured: the host times its effects.
    std::uint64_t processedCount = 0;
};

/// Base of effects on one picture. Time stamp and duration of the picture survive whatever the effect does.
template <class Interface, class SettingsClass>
class EffectBaseOneInput : public EffectBase<Interface, SettingsClass> {
public:
    using EffectBase<Interface, SettingsClass>::EffectBase;
    using Interface::ProcessData;

    void ProcessData(DataHandle& data) override {
        this->Run([&] {
            this->RequirePicture(data.get());
            std::int64_t const duration = data->GetDuration();
            std::int64_t const timeStamp = data->GetTimeStamp();
            this->WorkOn(data, [&](DataHandle& work) {
                ProcessInternal(work);
                if (work == nullptr) return;
                work->SetDuration(duration);
                work->SetTimeStamp(timeStamp);
            });
        });
    }

    /// The effect's work: in place, or by replacing the handle, with null where there is no result.
    virtual void ProcessInternal(DataHandle& data) = 0;
};

/// Base of effects on a first picture, the result, and a second one that is read.
template <class Interface, class SettingsClass>
class EffectBaseTwoInput : public EffectBase<Interface, SettingsClass> {
public:
    using EffectBase<Interface, SettingsClass>::EffectBase;
    using Interface::ProcessData;

    void ProcessData(DataHandle& first, ConstDataHandle const& second) override {
        this->Run([&] {
            this->RequirePicture(first.get());
            this->RequirePicture(second.get());
            this->WorkOn(first, [&](DataHandle& work) { ProcessInternal(work, second); });
        });
    }

    virtual void ProcessInternal(DataHandle& first, ConstDataHandle const& second) = 0;
};

/// Base of effects on any number of pictures. Empty settings give a null result.
template <class Interface, class SettingsClass>
class EffectBaseVarInput : public EffectBase<Interface, SettingsClass> {
public:
    using EffectBase<Interface, SettingsClass>::EffectBase;

    DataHandle Process(std::vector<DataHandle> const& inputs) override {
        DataHandle result;
        this->Run([&] { result = ProcessInternal(inputs); });
        return result;
    }

    virtual DataHandle ProcessInternal(std::vector<DataHandle> const& inputs) = 0;
};

/// What a factory function returns: the effect, with this handle as its only owner.
template <class Effect>
intrusive_ptr<IEffect> MakeEffect(FactoryHandle const& factory, ContextHandle const& context) {
    return MakeShared<Effect>(factory, context);
}

} // namespace Velnor::Proc
