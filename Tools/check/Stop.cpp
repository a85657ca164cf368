// An effect that is told to stop, at its first question, its second, its fourth...

#include "Proc/Interfaces/ProcException.h"
#include "Tools/check/Promises.h"

#include <atomic>
#include <memory>

namespace Velnor::Proc::Check {
namespace {

/// What a controller and its children have been asked and told.
struct Talk {
    explicit Talk(int stopAtQuestion) : stopAt(stopAtQuestion) {}

    bool Ask() {
        if (++questions < stopAt) return false;
        ++afterStop;
        return true;
    }
    void Tell() {
        ++reports;
        if (questions >= stopAt) ++afterStop;
    }

    int const stopAt;
    std::atomic<int> questions = 0;
    std::atomic<int> reports = 0;
    std::atomic<int> afterStop = 0; ///< Questions and reports from the answer on.
};

/// Says stop from a question on.
class StopController : public Core::IProgressController {
public:
    explicit StopController(std::shared_ptr<Talk> shared) : talk(std::move(shared)) {}
    void SetRange(std::uint64_t) override {}
    void SetPosition(std::uint64_t) override { talk->Tell(); }
    void Advance(std::uint64_t) override { talk->Tell(); }
    std::uint64_t GetRange() const override { return 0; }
    std::uint64_t GetPosition() const override { return 0; }
    double GetFraction() const override { return 0; }
    intrusive_ptr<IProgressController> CreateChild(std::uint64_t) override { return MakeShared<StopController>(talk); }
    void RequestStop() override {}
    bool IsStopRequested() const override { return talk->Ask(); }

private:
    std::shared_ptr<Talk> const talk;
};

/// More than threads that work side by side have under way when one of them is told.
constexpr int MOST_AFTER_STOP = 100;

constexpr std::uint32_t WIDTH = 96;
constexpr std::uint32_t HEIGHT = 70;

Bytes MakeOfNext(Subject const& subject, IEffect& effect, Journal& journal) {
    return Try(effect, subject.MakeInputs(PixFmt::RGB24, 41, 34, 3), journal).GetBytes();
}

/// Returns how many questions there were.
int StopAt(Subject const& subject, int question, Settings const& settings, Bytes const& expected, Journal& journal) {
    journal.Begin(NameOf(PixFmt::RGB24, WIDTH, HEIGHT) + ", stop at question " + std::to_string(question));
    auto const talk = std::make_shared<Talk>(question);
    auto const effect = subject.Make(settings);
    effect->SetProgressController(MakeShared<StopController>(talk));
    Try(*effect, subject.MakeInputs(PixFmt::RGB24, WIDTH, HEIGHT), journal);
    journal.Require(talk->afterStop <= MOST_AFTER_STOP, "is told to stop and works on");
    journal.Require(talk->questions > 0 || talk->reports == 0, "reports progress and never asks whether to stop");
    if (talk->afterStop == 0) return talk->questions;
    effect->SetProgressController(nullptr);
    journal.Require(MakeOfNext(subject, *effect, journal) == expected,
                    "makes of the next picture what a new effect does not");
    return talk->questions;
}

} // namespace

void CheckStop(Subject const& subject, Journal& journal) {
    auto const settings = subject.MakeTypicalSettings();
    journal.Begin(NameOf(PixFmt::RGB24, 41, 34));
    Bytes const expected = MakeOfNext(subject, *subject.Make(*settings), journal);
    for (int question = 1;; question *= 2)
        if (StopAt(subject, question, *settings, expected, journal) < question) break;
}

} // namespace Velnor::Proc::Check
