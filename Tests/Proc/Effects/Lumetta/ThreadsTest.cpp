// Threads that the plug-in starts: the cut's twelve, and none elsewhere. A program of its own, for it stands between
// all of its libraries and the system's way to create a thread.

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/PluginHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <string_view>
#include <system_error>

#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>

namespace {

std::atomic<int> started = 0;          ///< From the plug-in.
std::atomic<int> startedElsewhere = 0; ///< As those of the host, on the plug-in's behalf.
std::atomic<int> available = INT_MAX;  ///< To the plug-in.

/// Whether the call comes from the plug-in: its is the first code above the language's and the system's libraries.
bool IsCalledByPlugin() {
    std::array<void*, 24> frames{};
    int const count = backtrace(frames.data(), static_cast<int>(frames.size()));
    for (int i = 1; i < count; ++i) { // 0 is here
        Dl_info info{};
        if (dladdr(frames[static_cast<std::size_t>(i)], &info) == 0) continue;
        std::string_view const file = info.dli_fname;
        if (file.ends_with("/libLumetta.so")) return true;
        if (file.find("libVelnor") != file.npos) return false;
    }
    return false;
}

} // namespace

extern "C" int pthread_create(pthread_t* thread, pthread_attr_t const* attributes, void* (*routine)(void*),
                              void* argument) noexcept {
    static auto const create = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    bool const isPlugin = IsCalledByPlugin();
    if (isPlugin && available.fetch_sub(1) <= 0) return EAGAIN;
    ++(isPlugin ? started : startedElsewhere);
    return create(thread, attributes, routine, argument);
}

namespace Velnor::Proc {
namespace {

using namespace Testing;

/// Large enough for bands wherever there are any; strokes on both sides as the second.
std::vector<DataHandle> MakeInputs(EffectKind kind, std::uint32_t width, std::uint32_t height) {
    IEffectContext& context = *PluginHost().GetContext();
    std::vector<DataHandle> inputs{MakeNoise(context, PixFmt::RGB24, width, height, 1)};
    if (kind != EffectKind::TwoInput) return inputs;
    SettingsEffectGrabCutSegmentation const values;
    VideoHandle const strokes = context.CreateImage(PixFmt::GRAY8, FrameFormat::Square(width, height));
    strokes->Fill(Color::Black(Color::Opacity::Opaque));
    MutablePlane const plane = strokes->GetMutablePlane(0);
    std::fill_n(plane.GetRow(0), width, static_cast<unsigned char>(values.GetForeground()));
    std::fill_n(plane.GetRow(height - 1), width, static_cast<unsigned char>(values.GetBackground()));
    inputs.push_back(strokes);
    return inputs;
}

TEST(Threads, AreTheTwelveOfTheCutAlone) {
    int effectsCount = 0;
    for (RegisteredEffect const& registered : PluginHost().GetEffects()) {
        if (registered.implName != ImplNames::VELNOR) continue;
        SCOPED_TRACE(registered.classId);
        ++effectsCount;
        auto const effect = PluginHost().GetFactory()->CreateEffect(registered.classId, registered.implName);
        SettingsType const& type = effect->GetSettingsBase().GetType();
        auto const settings = type.create();
        for (SettingsField const& field : type.describe())
            if (!field.isOutput) field.parse(*settings, field.example);
        effect->SetSettings(*settings);
        started = 0;
        int cuts = registered.classId == SettingsEffectGrabCutSegmentation::CLASS_ID ||
                   registered.classId == SettingsEffectGrabCut::CLASS_ID;
        try {
            effect->ProcessData(MakeInputs(registered.kind, 2048, 1025));
        } catch (ProcException const&) { // Not made for noise.
        }
        if (registered.classId == SettingsEffectRemoveBackground::CLASS_ID) cuts = started / 12; // As many as it needs.
        EXPECT_EQ(started, 12 * cuts);
    }
    EXPECT_GE(effectsCount, 42);
    EXPECT_GT(startedElsewhere, 0) << "the host's bands were seen";
}

TEST(Threads, ThoseThatCanBeHadDoTheWork) {
    auto const effect =
        PluginHost().GetFactory()->CreateEffect(SettingsEffectGrabCutSegmentation::CLASS_ID, ImplNames::VELNOR);
    auto const inputs = MakeInputs(EffectKind::TwoInput, 1500, 90);
    auto const run = [&](int threads) {
        available = threads;
        started = 0;
        DataHandle const result = effect->ProcessData(inputs);
        available = INT_MAX;
        EXPECT_EQ(started, std::min(threads, 12));
        return Samples(AsVideo(result));
    };
    auto const expected = run(INT_MAX);
    for (int const threads : {1, 2, 5}) EXPECT_TRUE(run(threads) == expected) << threads;
    EXPECT_THROW(run(0), std::system_error);
    available = INT_MAX;
}

} // namespace
} // namespace Velnor::Proc
