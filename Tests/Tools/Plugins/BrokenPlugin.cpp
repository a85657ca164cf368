// Effects that each break a promise in one way, and one that keeps them all, for the test of `velnor check`.

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace Velnor::Proc {
namespace {

/// Calls `change` with each row of the first plane and its width.
template <class Change>
void ForEachRow(IDataVideo& picture, Change const& change) {
    MutablePlane const plane = picture.GetMutablePlane(0);
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) change(plane.GetRow(y), plane.GetWidth());
}

unsigned char& FirstByte(IDataVideo& picture) { return *picture.GetMutablePlane(0).GetRow(0); }

} // namespace

#define SETTINGS(Name)                                                                                                 \
    class VELNOR_API SettingsEffect##Name final : public SettingsOf<SettingsEffect##Name> {                            \
        VELNOR_SETTINGS(SettingsEffect##Name, "Breaks a promise.")                                                     \
        VELNOR_SETTINGS_END                                                                                            \
    };                                                                                                                 \
    VELNOR_DEFINE_SETTINGS(SettingsEffect##Name)

/// An effect on one picture by its work on `data`.
#define EFFECT(Name, ...)                                                                                              \
    class Name : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffect##Name> {                               \
    public:                                                                                                            \
        using EffectBaseOneInput::EffectBaseOneInput;                                                                  \
        void ProcessInternal([[maybe_unused]] DataHandle& data) override __VA_ARGS__                                   \
    };

SETTINGS(Sound)
EFFECT(Sound, { FirstByte(OwnPicture(data)) ^= 1; })

SETTINGS(WritesPastRows)
EFFECT(WritesPastRows, { ForEachRow(OwnPicture(data), [](auto* row, auto width) { row[width] = 1; }); })

SETTINGS(WritesToShared)
EFFECT(WritesToShared, { *const_cast<unsigned char*>(std::as_const(AsVideo(data)).GetPlane(0).GetRow(0)) ^= 1; })

SETTINGS(KeepsState)
EFFECT(KeepsState, {
    last = static_cast<unsigned char>(last + data->GetFrameFormat().width);
    FirstByte(OwnPicture(data)) = last;
} unsigned char last = 0;)

SETTINGS(OnlyNewSizes)
EFFECT(OnlyNewSizes, {
    if (last == data->GetFrameFormat()) return;
    last = data->GetFrameFormat();
    FirstByte(OwnPicture(data)) ^= 1;
} FrameFormat last{};)

SETTINGS(DiffersEachTime)
EFFECT(DiffersEachTime, {
    static unsigned char calls = 0;
    FirstByte(OwnPicture(data)) = ++calls;
})

SETTINGS(LeavesUnwritten)
EFFECT(LeavesUnwritten, {
    VideoHandle const made = context->CreateImage(data->GetPixFmt(), data->GetFrameFormat());
    FirstByte(*made) = 1;
    data = made;
})

SETTINGS(SpoilsBeforeRefusal)
EFFECT(SpoilsBeforeRefusal, {
    FirstByte(AsVideo(data)) ^= 1;
    if (data->GetPixFmt() != PixFmt::RGB24) VELNOR_THROW(EffectException, "Only rgb24 is taken.");
})

SETTINGS(SpoilsBeforeFailure)
EFFECT(SpoilsBeforeFailure, {
    FirstByte(AsVideo(data)) ^= 1;
    MakeOneInput(SettingsColorspaceConverter(PixFmt::RGB24, true))->ProcessData(data);
})

SETTINGS(KeepsHalfACache)
EFFECT(KeepsHalfACache,
       {
           bool const isNew = format != data->GetPixFmt();
           format = data->GetPixFmt(); // Before the converter, which may fail.
           if (isNew) converter = MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, true));
           if (converter) converter->ProcessData(data);
       } PixFmt format = PixFmt::NONE;
       intrusive_ptr<IOneInputEffectVideo> converter;)

SETTINGS(NeverAsks)
EFFECT(NeverAsks, {
    GetProgress().controller->SetRange(data->GetFrameFormat().height);
    ForEachRow(OwnPicture(data), [&](auto* row, auto) {
        *row ^= 1;
        GetProgress().controller->Advance(1);
    });
})

SETTINGS(WorksOn)
EFFECT(WorksOn, {
    ForEachRow(OwnPicture(data), [&](auto* row, auto) {
        for (int i = 0; i < 4; ++i)
            if (GetProgress().controller->IsStopRequested()) *row = 1;
    });
})

SETTINGS(StartsThreads)
EFFECT(StartsThreads, { std::thread([] {}).join(); })

SETTINGS(LeavesThreads)
EFFECT(LeavesThreads, {
    std::thread([] {
        for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
})

SETTINGS(Crashes)
EFFECT(Crashes, {
    if (data->GetPixFmt() == PixFmt::GRAY8 && data->GetFrameFormat().width == 3) std::abort();
})

SETTINGS(Exits)
EFFECT(Exits, {
    if (data->GetPixFmt() == PixFmt::NV12) std::_Exit(7);
})

SETTINGS(Hangs)
EFFECT(Hangs, {
    while (data->GetPixFmt() == PixFmt::YA8) std::this_thread::sleep_for(std::chrono::milliseconds(1));
})

SETTINGS(ShowsHidden)
EFFECT(ShowsHidden, {
    if (data->GetPixFmt() == PixFmt::RGBA) // Red moves to the left; opacity stays.
        ForEachRow(OwnPicture(data), [](auto* row, auto width) {
            for (std::uint64_t x = 0; x + 4 < width; x += 4) row[x] = row[x + 4];
        });
})

SETTINGS(ThrowsOther)
EFFECT(ThrowsOther, {
    if (data->GetFrameFormat().width == 1) throw std::out_of_range("vector::at");
})

SETTINGS(RefusesAll)
EFFECT(RefusesAll, { VELNOR_THROW(EffectException, "This is never done."); })

// Their fields count from the macro that begins a class, so these cannot stand in another.
class VELNOR_API SettingsEffectBadSettings final : public SettingsOf<SettingsEffectBadSettings> {
    VELNOR_SETTINGS(SettingsEffectBadSettings, "Breaks a promise.")
    VELNOR_FIELD(int, Strength, 50, "how much", Range(0, 10))
    VELNOR_FIELD(int, Mute, 5, "", Range(0, 10))
    VELNOR_SETTINGS_END
};
VELNOR_DEFINE_SETTINGS(SettingsEffectBadSettings)
EFFECT(BadSettings, {})

class VELNOR_API SettingsEffectFailsAtEnd final : public SettingsOf<SettingsEffectFailsAtEnd> {
    VELNOR_SETTINGS(SettingsEffectFailsAtEnd, "Breaks a promise.")
    VELNOR_FIELD(int, Strength, 50, "how much", Range(0, 100))
    VELNOR_SETTINGS_END
};
VELNOR_DEFINE_SETTINGS(SettingsEffectFailsAtEnd)
EFFECT(FailsAtEnd, {
    if (settings.GetStrength() == 100) std::abort();
})

/// Is registered as an effect on two pictures.
SETTINGS(OtherKind)
EFFECT(OtherKind, {})

SETTINGS(IgnoresBypass)
class IgnoresBypass : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectIgnoresBypass> {
public:
    using EffectBaseOneInput::EffectBaseOneInput;
    void ProcessData(DataHandle& data) override { data = AsVideo(data).MakeCopy(CopyMode::Value); }
    void ProcessInternal(DataHandle&) override {}
};

} // namespace Velnor::Proc

using namespace Velnor::Proc;

extern "C" VELNOR_API void Registrator(IEffectRegistry* registry);
void Registrator(IEffectRegistry* registry) {
#define REGISTER(Name)                                                                                                 \
    registry->RegisterOneInputEffect("SettingsEffect" #Name, ImplNames::VELNOR, MakeEffect<Name>, nullptr)
    REGISTER(Sound);
    REGISTER(WritesPastRows);
    REGISTER(WritesToShared);
    REGISTER(KeepsState);
    REGISTER(OnlyNewSizes);
    REGISTER(DiffersEachTime);
    REGISTER(LeavesUnwritten);
    REGISTER(SpoilsBeforeRefusal);
    REGISTER(SpoilsBeforeFailure);
    REGISTER(KeepsHalfACache);
    REGISTER(NeverAsks);
    REGISTER(WorksOn);
    REGISTER(StartsThreads);
    REGISTER(LeavesThreads);
    REGISTER(Crashes);
    REGISTER(Exits);
    REGISTER(Hangs);
    REGISTER(ShowsHidden);
    REGISTER(ThrowsOther);
    REGISTER(RefusesAll);
    REGISTER(BadSettings);
    REGISTER(FailsAtEnd);
    REGISTER(IgnoresBypass);
    registry->RegisterTwoInputEffect("SettingsEffectOtherKind", ImplNames::VELNOR, MakeEffect<OtherKind>, nullptr);
}
