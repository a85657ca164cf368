// What an effect does with pictures of all formats and sizes, and with what is no picture.

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Tools/check/Promises.h"

#include <array>
#include <functional>
#include <stdexcept>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

constexpr std::int64_t TIME_STAMP = 1234;

std::vector<std::pair<std::uint32_t, std::uint32_t>> GetSizes(int level) {
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 7> ALL{
        {{1, 1}, {3, 5}, {16, 9}, {2, 1}, {33, 31}, {1, 64}, {65, 2}}};
    return {ALL.begin(), ALL.begin() + (level > 2 ? 7 : level > 1 ? 5 : 3)};
}

/// What comes out is a picture that the host's converter takes.
void CheckResult(Subject const& subject, DataHandle result, Journal& journal) {
    if (!result) return;
    auto const converter =
        subject.GetHost().GetFactory()->CreateOneInputEffect(SettingsColorspaceConverter::CLASS_ID, ImplNames::DEFAULT);
    converter->SetSettings(SettingsColorspaceConverter(PixFmt::RGBA, true));
    journal.Require(PixFmtDescription::Find(result->GetPixFmt()) != nullptr, "the result has no known pixel format");
    converter->ProcessData(result);
}

/// One step; returns why the effect refused, empty when it did not.
std::string CheckOne(Subject const& subject, IEffect& effect, std::vector<DataHandle> const& content,
                     Journal& journal) {
    std::vector<GuardedPicture> callers;
    for (DataHandle const& each : content) callers.emplace_back(subject.GetContext(), AsVideo(each));
    std::vector<DataHandle> inputs;
    for (GuardedPicture const& each : callers) inputs.emplace_back(each.Share());
    inputs[0]->SetTimeStamp(TIME_STAMP);
    Outcome const outcome = Try(effect, std::move(inputs), journal);
    for (GuardedPicture const& each : callers)
        journal.Require(each.IsUntouched(), "the memory that the caller shares has changed");
    if (!outcome.refusal.empty()) return outcome.refusal;
    DataHandle const& result = outcome.results.front();
    if (subject.GetEffect().kind == EffectKind::OneInput && result)
        journal.Require(result->GetTimeStamp() == TIME_STAMP, "the picture's time stamp is lost");
    for (DataHandle const& each : outcome.results) CheckResult(subject, each, journal);
    return "";
}

/// Joins photographs that overlap; noise has nothing that they could be joined by.
bool IsForViews(Subject const& subject) { return subject.GetName() == "panorama" || subject.GetName() == "stitcher"; }

template <class Allowed>
void RequireRefusal(std::function<void()> const& run, Journal& journal) {
    try {
        run();
        journal.Break("the effect takes it");
    } catch (Allowed const&) {
    }
}

} // namespace

void CheckBypass(Subject const& subject, Journal& journal) {
    auto const settings = subject.MakeTypicalSettings();
    settings->SetBypassed(true);
    auto const effect = subject.Make(*settings);
    journal.Begin("bypass=true, " + NameOf(PixFmt::RGB24, 9, 7));
    std::vector<DataHandle> const inputs = subject.MakeInputs(PixFmt::RGB24, 9, 7);
    std::vector<Sight> const before = SeeAll(inputs);
    DataHandle const result = effect->ProcessData(inputs);
    bool const isVarInput = subject.GetEffect().kind == EffectKind::VarInput;
    journal.Require(isVarInput || result == inputs[0], "the result is not the picture that came");
    journal.Require(!isVarInput || result == nullptr, "there is a result all the same");
    journal.Require(SeeAll(inputs) == before, "the picture is changed all the same");
}

void CheckWrongInputs(Subject const& subject, Journal& journal) {
    auto const effect = subject.Make(*subject.MakeTypicalSettings());
    if (effect->GetSettingsBase().IsEmpty()) return;
    std::vector<DataHandle> inputs = subject.MakeInputs(PixFmt::RGB24, 9, 7);
    std::vector<DataHandle> const none(inputs.size());
    journal.Begin("a null handle in place of a picture");
    RequireRefusal<ProcException>([&] { effect->ProcessData(none); }, journal);
    if (subject.GetEffect().kind == EffectKind::VarInput) return;
    journal.Begin("a picture too many");
    inputs.push_back(inputs[0]);
    RequireRefusal<std::logic_error>([&] { effect->ProcessData(inputs); }, journal);
}

void CheckFormats(Subject const& subject, Journal& journal) {
    auto const effect = subject.Make(*subject.MakeTypicalSettings());
    bool isAnyAccepted = false;
    std::string refusal;
    for (PixFmtDescription const& format : PixFmtDescription::GetAll())
        for (auto const& [width, height] : GetSizes(subject.GetLevel())) {
            journal.Begin(NameOf(format.format, width, height));
            std::string const reason =
                CheckOne(subject, *effect, subject.MakeInputs(format.format, width, height), journal);
            isAnyAccepted = isAnyAccepted || reason.empty();
            if (!reason.empty()) refusal = reason;
        }
    journal.Begin("all formats and sizes");
    if (!isAnyAccepted && !IsForViews(subject)) journal.Break("every picture is refused: " + refusal);
}

} // namespace Velnor::Proc::Check
