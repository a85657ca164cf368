#include "Tools/check/CheckPlugin.h"

#include "Proc/Host/PluginLoader.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tools/check/Apart.h"
#include "Tools/check/Promises.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

// What the processes say, and in which order of words.
constexpr char const* EFFECT = "effect";   ///< Kind, implementation, class.
constexpr char const* PROMISE = "promise"; ///< Its place in the list, before each.
constexpr char const* WAIVED = "waived";   ///< The reason.
constexpr char const* AT = "at";
constexpr char const* BROKEN = "broken";

/// Seen when a picture's memory goes back to the host, in the midst of other work.
std::atomic<int> overruns = 0;

/// Tells the parent process.
class SpokenJournal : public Journal {
public:
    explicit SpokenJournal(Speech const& toParent) : speech(toParent) {}
    void Begin(std::string const& where) override {
        TellOverruns();
        speech.Say(AT, where);
    }
    void Break(std::string const& what) override { speech.Say(BROKEN, what); }
    void TellOverruns() {
        for (int i = overruns.exchange(0); i > 0; --i) Break("writes past the rows of a picture");
    }

private:
    Speech const& speech;
};

/// The other plug-ins are there for the effects that this one's are made of. Those that do not load beside it, such as
/// another copy of it, are left out.
void LoadPlugins(Host& host, std::filesystem::path const& plugin) {
    host.LoadPlugin(plugin);
    for (std::filesystem::path const& file : FindInstalledPlugins()) {
        std::error_code error;
        if (std::filesystem::equivalent(file, plugin, error)) continue;
        try {
            host.LoadPlugin(file);
        } catch (ProcException const&) {
        }
    }
}

void SayEffects(std::filesystem::path const& plugin, Speech const& speech) {
    StandardHost host;
    host.LoadPlugin(plugin);
    for (RegisteredEffect const& effect : host.GetEffects())
        if (effect.origin != "host")
            speech.Say(EFFECT,
                       std::to_string(static_cast<int>(effect.kind)) + " " + effect.implName + " " + effect.classId);
}

RegisteredEffect ParseEffect(std::string const& text, std::filesystem::path const& plugin) {
    std::size_t const first = text.find(' ');
    std::size_t const second = text.find(' ', first + 1);
    return {text.substr(second + 1), text.substr(first + 1, second - first - 1),
            static_cast<EffectKind>(std::stoi(text.substr(0, first))), plugin.filename().string()};
}

/// One effect, promise after promise. When one ends the process, another process goes on with the next.
class EffectCheck {
public:
    EffectCheck(CheckOptions const& given, RegisteredEffect const& effect)
        : options(given), report{effect, GetEffectName(effect), {}, {}} {}

    EffectReport Run() {
        for (std::size_t next = 0; next < GetPromises().size(); next = promise + 1) {
            promise = next;
            where.clear();
            Ending const end =
                RunApart([&](Speech const& speech) { CheckFrom(next, speech); },
                         [&](auto const& kind, auto const& text) { Note(kind, text); }, options.timeLimit);
            if (end.kind == Ending::Kind::Done) break;
            NoteBroken(end.text);
            // What cannot be made, or hangs, would do so again and again.
            if (end.kind != Ending::Kind::Died || promise == 0) break;
        }
        return report;
    }

private:
    bool IsChecked(Promise const& one) const {
        return one.level <= options.level && std::ranges::find(options.skipped, one.name) == options.skipped.end();
    }

    // In the other process:
    void CheckFrom(std::size_t first, Speech const& speech) const {
        speech.Say(PROMISE, std::to_string(first));
        StandardHost host(GuardedMemory([](std::string const&) { ++overruns; }));
        LoadPlugins(host, options.plugin);
        Subject const subject(host, report.effect, options.level, options.plugin);
        SpokenJournal journal(speech);
        for (std::size_t i = first; i < GetPromises().size(); ++i) {
            speech.Say(PROMISE, std::to_string(i));
            CheckOne(subject, GetPromises()[i], journal, speech);
        }
    }

    void CheckOne(Subject const& subject, Promise const& one, SpokenJournal& journal, Speech const& speech) const {
        if (!IsChecked(one)) return;
        std::string_view const reason = FindWaiver(report.effect, one);
        if (!reason.empty()) return speech.Say(WAIVED, std::string(reason));
        try {
            one.check(subject, journal);
        } catch (...) {
            journal.Break("throws: " + DescribeCurrentException());
        }
        journal.TellOverruns();
    }

    // In this one:
    void Note(std::string const& kind, std::string const& text) {
        if (kind == AT) where = text;
        if (kind == BROKEN) NoteBroken(text);
        if (kind == WAIVED) report.waived.push_back({GetPromise(), text});
        if (kind != PROMISE) return;
        promise = static_cast<std::size_t>(std::stoul(text));
        where.clear();
    }

    void NoteBroken(std::string const& what) {
        auto const same = std::ranges::find_if(
            report.broken, [&](Finding const& known) { return known.promise == GetPromise() && known.what == what; });
        if (same == report.broken.end())
            report.broken.push_back({GetPromise(), where, what});
        else
            ++same->cases;
    }

    std::string GetPromise() const { return std::string(GetPromises()[promise].name); }

    CheckOptions const& options;
    EffectReport report;
    std::size_t promise = 0; ///< Where the other process stands.
    std::string where;
};

} // namespace

MemoryLimits GuardedMemory(void (*onOverrun)(std::string const& what)) {
    MemoryLimits limits;
    limits.fillNew = true;
    limits.onOverrun = onOverrun;
    return limits;
}

PluginReport CheckPlugin(CheckOptions const& options, std::function<void(EffectReport const&)> const& onEffect) {
    PluginReport report;
    std::vector<RegisteredEffect> effects;
    Ending const end = RunApart(
        [&](Speech const& speech) { SayEffects(options.plugin, speech); },
        [&](std::string const&, std::string const& text) { effects.push_back(ParseEffect(text, options.plugin)); },
        options.timeLimit);
    report.failure = end.text;
    if (end.kind != Ending::Kind::Done) return report;
    for (RegisteredEffect const& effect : effects) {
        std::string const name = GetEffectName(effect);
        if (std::ranges::find(report.names, name) == report.names.end()) report.names.push_back(name);
        if (!options.effect.empty() && options.effect != name) continue;
        report.effects.push_back(EffectCheck(options, effect).Run());
        onEffect(report.effects.back());
    }
    return report;
}

} // namespace Velnor::Proc::Check
