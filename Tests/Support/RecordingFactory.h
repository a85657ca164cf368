#pragma once

// A factory whose effects write down what is done with them. What a composition asserts on is the list of calls:
//
//     create 1 SettingsResizer/Default
//     set 1 mode=by-factor factor=0.5
//     run 1

#include "Proc/Interfaces/IEffectFactory.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Velnor::Proc::Testing {

using Calls = std::vector<std::string>;

/// Calls from one text, in which "; " stands between them.
inline Calls Steps(std::string_view text) {
    Calls calls;
    for (std::size_t end = 0; end != text.npos; text.remove_prefix(end == text.npos ? 0 : end + 2))
        calls.emplace_back(text.substr(0, end = text.find("; ")));
    return calls;
}

/// The fields that differ from their defaults, as "name=value", separated by blanks.
inline std::string DescribeChanges(Settings const& settings) {
    std::string text;
    for (SettingsField const& field : settings.GetType().describe())
        if (std::string const value = field.print(settings); value != field.defaultText)
            text += " " + field.name + "=" + value;
    return text;
}

struct Recorder {
    using OneInput = std::function<void(DataHandle&)>;
    using TwoInput = std::function<void(DataHandle&, ConstDataHandle const&)>;

    Calls calls;
    std::map<int, OneInput> oneInput; ///< What effect n does when it runs; nothing when it is not here.
    std::map<int, TwoInput> twoInput;
    std::map<int, std::function<void(Settings&)>> findings; ///< What effect n writes into its settings when it runs.
    std::function<void(std::string const& call)> onCall;    ///< Sees each call before it counts; may throw.
    int created = 0;

    void Note(std::string const& call) {
        calls.push_back(call);
        if (onCall) onCall(call);
    }
    Calls Take() { return std::exchange(calls, {}); }
};

template <class Kind>
class RecordingEffect : public Kind {
public:
    RecordingEffect(Recorder& calls, int index, std::string const& classId)
        : recorder(calls), number(index), settings(SettingsType::Find(classId)->create()) {}

    using Kind::ProcessData;
    void SetSettings(Settings const& next) override {
        recorder.Note("set " + std::to_string(number) + DescribeChanges(next));
        settings = next.Clone();
    }
    void Flush() override { recorder.Note("flush " + std::to_string(number)); }
    void ResetSettings() override { recorder.Note("reset " + std::to_string(number)); }
    Core::Property GetStatistic() override { return Core::Property("recorded"); }
    Settings const& GetSettingsBase() const override { return *settings; }

protected:
    void NoteRun() {
        recorder.Note("run " + std::to_string(number));
        if (auto const found = recorder.findings.find(number); found != recorder.findings.end())
            found->second(*settings);
    }

    Recorder& recorder;
    int const number;
    std::unique_ptr<Settings> settings;
};

class RecordingOneInput : public RecordingEffect<IOneInputEffectVideo> {
public:
    using RecordingEffect::ProcessData;
    using RecordingEffect::RecordingEffect;
    void ProcessData(DataHandle& data) override {
        NoteRun();
        if (auto const found = recorder.oneInput.find(number); found != recorder.oneInput.end()) found->second(data);
    }
};

class RecordingTwoInput : public RecordingEffect<ITwoInputEffectVideo> {
public:
    using RecordingEffect::ProcessData;
    using RecordingEffect::RecordingEffect;
    void ProcessData(DataHandle& first, ConstDataHandle const& second) override {
        NoteRun();
        if (auto const found = recorder.twoInput.find(number); found != recorder.twoInput.end())
            found->second(first, second);
    }
};

/// Gives its first picture back.
class RecordingVarInput : public RecordingEffect<IVarInputEffectVideo> {
public:
    using RecordingEffect::RecordingEffect;
    DataHandle Process(std::vector<DataHandle> const& inputs) override {
        NoteRun();
        return inputs.at(0);
    }
};

/// The recorder must outlive the effects.
class RecordingFactory : public IEffectFactory {
public:
    explicit RecordingFactory(Recorder& calls) : recorder(calls) {}

    bool Has(std::string const&, std::string const&) const override { return true; }
    EffectKind GetKind(std::string const&, std::string const&) const override { return EffectKind::OneInput; }
    std::vector<std::string> GetClassIds() const override { return {}; }
    std::vector<std::string> GetImplNames(std::string const&) const override { return {}; }
    intrusive_ptr<IEffect> CreateEffect(std::string const& classId, std::string const& impl) override {
        return Create<RecordingOneInput>(classId, impl);
    }
    bool HasOneInputEffect(std::string const&, std::string const&) const override { return true; }
    void CreateOneInputEffect(intrusive_ptr<IOneInputEffectVideo>* result, std::string const& classId,
                              std::string const& impl) override {
        *result = Create<RecordingOneInput>(classId, impl);
    }
    bool HasTwoInputEffect(std::string const&, std::string const&) const override { return true; }
    bool HasVarInputEffect(std::string const&, std::string const&) const override { return true; }
    void CreateVarInputEffect(intrusive_ptr<IVarInputEffectVideo>* result, std::string const& classId,
                              std::string const& impl) override {
        *result = Create<RecordingVarInput>(classId, impl);
    }
    void CreateTwoInputEffect(intrusive_ptr<ITwoInputEffectVideo>* result, std::string const& classId,
                              std::string const& impl) override {
        *result = Create<RecordingTwoInput>(classId, impl);
    }

private:
    template <class Effect>
    intrusive_ptr<Effect> Create(std::string const& classId, std::string const& impl) {
        int const number = ++recorder.created;
        recorder.Note("create " + std::to_string(number) + " " + classId + "/" + impl);
        return MakeShared<Effect>(recorder, number, classId);
    }

    Recorder& recorder;
};

/// An effect whose sub-effects do what the recorder says.
template <auto Create>
class CompositionTest : public ::testing::Test {
protected:
    DataHandle Run(DataHandle const& picture) { return effect->ProcessData(std::vector<DataHandle>{picture}); }

    /// The work fails with the call that begins so, and what was called until then is forgotten.
    template <class Work>
    void ExpectFailureAt(std::string const& failing, Work const& work) {
        recorder.onCall = [&](std::string const& call) {
            if (call.starts_with(failing)) VELNOR_THROW(ProcException, "once");
        };
        EXPECT_THROW(work(), ProcException) << failing;
        recorder.onCall = nullptr;
        recorder.Take();
    }

    Recorder recorder;
    ContextHandle const context = CreateContext();
    intrusive_ptr<IEffect> const effect = Create(MakeShared<RecordingFactory>(recorder), context);
};

} // namespace Velnor::Proc::Testing
