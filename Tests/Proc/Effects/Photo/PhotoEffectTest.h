#pragma once

#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/Refusal.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace Velnor::Proc::Testing {

/// One of the host's effects that lie in modules, as an application gets it.
template <class SettingsClass>
class PhotoEffectTest : public ::testing::Test {
protected:
    VideoHandle Apply(SettingsClass const& settings, DataHandle data) {
        effect->SetSettings(settings);
        effect->ProcessData(data);
        return VideoHandle(&AsVideo(data));
    }
    SettingsClass const& Result() const { return dynamic_cast<SettingsClass const&>(effect->GetSettingsBase()); }

    /// The text of the refusal, empty when there is none. The picture stays as it was.
    std::string Refusal(SettingsClass const& settings, DataHandle const& data) {
        return RefusalOf([&] { Apply(settings, data); });
    }

    VideoHandle ReadSample(std::string const& name) {
        return ReadPicture(std::string(Testing::SOURCE_DIR) + "/Samples/" + name, context).picture;
    }
    std::string WriteFile(std::string const& name, std::string const& content) const {
        std::filesystem::path const path = folder.GetPath() / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    StandardHost host;
    IEffectContext& context = *host.GetContext();
    TemporaryFolder folder;
    intrusive_ptr<IOneInputEffectVideo> effect =
        host.GetFactory()->CreateOneInputEffect(SettingsClass::CLASS_ID, ImplNames::DEFAULT);
};

} // namespace Velnor::Proc::Testing
