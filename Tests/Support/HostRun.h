#pragma once

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"

namespace Velnor::Proc::Testing {

/// A host with the plug-in's effects, and one call to run one of them on a copy of a picture.
struct HostRun {
    explicit HostRun(bool hasPlugin = true) {
        if (hasPlugin) Registrator(&host.GetRegistry());
    }

    template <class SettingsClass>
    intrusive_ptr<IEffect> Make(SettingsClass const& settings) {
        auto const effect = host.GetFactory()->CreateEffect(SettingsClass::CLASS_ID, ImplNames::DEFAULT);
        effect->SetSettings(settings);
        return effect;
    }

    template <class SettingsClass>
    VideoHandle Apply(SettingsClass const& settings, VideoHandle const& picture, VideoHandle const& second = nullptr) {
        std::vector<DataHandle> inputs{picture ? picture->MakeCopy(CopyMode::Value) : nullptr};
        if (second) inputs.push_back(second);
        return VideoHandle(&AsVideo(Make(settings)->ProcessData(inputs)));
    }

    VideoHandle Convert(VideoHandle const& picture, PixFmt format) {
        return Apply(SettingsColorspaceConverter(format, true), picture);
    }

    template <class SettingsClass, class... Pictures>
    std::string Refusal(SettingsClass const& settings, Pictures const&... pictures) {
        return RefusalOf([&] { Apply(settings, pictures...); });
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
};

class HostRunTest : public ::testing::Test, protected HostRun {
protected:
    explicit HostRunTest(bool hasPlugin = true) : HostRun(hasPlugin) {}
};

} // namespace Velnor::Proc::Testing
