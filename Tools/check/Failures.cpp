// An effect in a world that fails at the first call, at the second, and so on, until the effect has what it needs:
// whoever called it finds everything as it was, and the next picture meets an effect like a new one.

#include "Proc/Interfaces/ProcException.h"
#include "Tools/check/Failing.h"
#include "Tools/check/Promises.h"

namespace Velnor::Proc::Check {
namespace {

/// A bound for an effect whose calls never come to an end.
constexpr int MOST_CALLS = 5000;

class Failures {
public:
    Failures(Subject const& checked, PixFmt pictures, Journal& log)
        : subject(checked), format(pictures), journal(log), settings(subject.MakeTypicalSettings()) {}

    void CheckAll() {
        journal.Begin(NameOf(format, 41, 34));
        fresh = {MakeOfNext(*MakeSet(), false), MakeOfNext(*MakeSet(), true)};
        Trouble none;
        unset = MakeOfNext(*Make(none), true);
        for (int failAt = 1; failAt < MOST_CALLS; ++failAt) {
            journal.Begin(NameOf(format, 33, 21) + ", call " + std::to_string(failAt) + " fails");
            if (!IsReached(failAt)) break;
        }
    }

private:
    intrusive_ptr<IEffect> Make(Trouble& trouble) const {
        return subject.Make(MakeFailingFactory(subject.GetHost().GetFactory(), trouble),
                            MakeFailingContext(subject.GetHost().GetContext(), trouble));
    }

    /// Whether the effect made so many calls that one was to fail.
    bool IsReached(int failAt) {
        Trouble trouble{0, failAt};
        try {
            auto const effect = Make(trouble);
            if (!IsConfigured(*effect)) return true;
            RunInto(*effect);
            if (trouble.calls < failAt) return false;
            // Once of the size of the picture that failed, once of another.
            bool const hasNewSize = failAt % 2 == 0;
            journal.Require(MakeOfNext(*effect, hasNewSize) == fresh[hasNewSize ? 1 : 0], NOT_AS_NEW);
        } catch (ProcException const&) { // In the constructor, where there is nothing yet that could be changed.
        }
        return true;
    }

    /// Whether the settings went in without trouble.
    bool IsConfigured(IEffect& effect) {
        try {
            effect.SetSettings(*settings);
            return true;
        } catch (ProcException const&) {
        }
        journal.Require(MakeOfNext(effect, true) == unset, "has other settings after SetSettings has failed");
        effect.SetSettings(*settings);
        journal.Require(MakeOfNext(effect, true) == fresh[1], NOT_AS_NEW);
        return false;
    }

    void RunInto(IEffect& effect) {
        std::vector<DataHandle> inputs = MakeInputs(33, 21, 1);
        inputs[0]->SetTimeStamp(1234);
        std::vector<Sight> const before = SeeAll(inputs);
        try {
            Run(effect, inputs);
        } catch (ProcException const&) {
            journal.Require(SeeAll(inputs) == before, "the caller's picture is not as before");
        }
    }

    /// The troubles of these effects must live as long as they do.
    intrusive_ptr<IEffect> MakeSet() {
        auto effect = Make(untroubled);
        effect->SetSettings(*settings);
        return effect;
    }

    Bytes MakeOfNext(IEffect& effect, bool hasNewSize) const {
        return Try(effect, hasNewSize ? MakeInputs(41, 34, 3) : MakeInputs(33, 21, 3), journal).GetBytes();
    }

    std::vector<DataHandle> MakeInputs(std::uint32_t width, std::uint32_t height, std::uint32_t seed) const {
        return subject.MakeInputs(format, width, height, seed);
    }

    static constexpr char const* NOT_AS_NEW = "makes of the next picture what a new effect does not";

    Subject const& subject;
    PixFmt const format;
    Journal& journal;
    std::unique_ptr<Settings> const settings;
    Trouble untroubled;
    std::array<Bytes, 2> fresh; ///< What a new effect makes of the next picture: of the same size, of another.
    Bytes unset;                ///< The same with the settings that it begins with.
};

} // namespace

void CheckFailures(Subject const& subject, Journal& journal) {
    Failures(subject, PixFmt::RGB24, journal).CheckAll();
    if (subject.GetLevel() < 3) return;
    for (PixFmt const format : {PixFmt::YUV420P, PixFmt::PAL8}) Failures(subject, format, journal).CheckAll();
}

} // namespace Velnor::Proc::Check
