#include "Tools/check/Subject.h"

#include "Proc/Interfaces/ProcException.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Velnor::Proc::Check {
namespace {

SettingsType const& FindType(Host& host, RegisteredEffect const& effect) {
    if (SettingsType const* known = SettingsType::Find(effect.classId)) return *known;
    return host.GetFactory()->CreateEffect(effect.classId, effect.implName)->GetSettingsBase().GetType();
}

EffectFactoryFunction FindFunction(IEffectRegistry const& registry, RegisteredEffect const& effect) {
    switch (effect.kind) {
    case EffectKind::TwoInput:
        return registry.FindTwoInputEffect(effect.classId, effect.implName);
    case EffectKind::VarInput:
        return registry.FindVarInputEffect(effect.classId, effect.implName);
    default:
        return registry.FindOneInputEffect(effect.classId, effect.implName);
    }
}

/// Too few words to tell anybody what was wrong.
constexpr std::size_t SHORTEST_REASON = 10;

} // namespace

Bytes Outcome::GetBytes() const {
    Bytes all(refusal.begin(), refusal.end());
    for (DataHandle const& result : results) {
        if (!result) continue;
        IDataVideo const& picture = AsVideo(ConstDataHandle(result));
        std::string const name =
            NameOf(picture.GetPixFmt(), picture.GetFrameFormat().width, picture.GetFrameFormat().height);
        all.insert(all.end(), name.begin(), name.end());
        Bytes const samples = Samples(picture);
        all.insert(all.end(), samples.begin(), samples.end());
    }
    return all;
}

std::string GetEffectName(RegisteredEffect const& effect) {
    SettingsType named;
    named.classId = effect.classId;
    return named.GetEffectName();
}

Subject::Subject(Host& effectHost, RegisteredEffect registered, int checkLevel, std::filesystem::path pluginFile)
    : host(effectHost),
      effect(std::move(registered)),
      level(checkLevel),
      file(std::move(pluginFile)),
      type(FindType(host, effect)) {}

intrusive_ptr<IEffect> Subject::Make() const {
    return host.GetFactory()->CreateEffect(effect.classId, effect.implName);
}

intrusive_ptr<IEffect> Subject::Make(Settings const& settings) const {
    intrusive_ptr<IEffect> made = Make();
    made->SetSettings(settings);
    return made;
}

intrusive_ptr<IEffect> Subject::Make(FactoryHandle const& factory, ContextHandle const& context) const {
    return FindFunction(host.GetRegistry(), effect)(factory, context);
}

std::unique_ptr<Settings> Subject::MakeTypicalSettings() const {
    std::unique_ptr<Settings> settings = type.create();
    for (SettingsField const& field : type.describe())
        if (!field.isOutput) field.parse(*settings, field.example);
    return settings;
}

std::size_t Subject::CountInputs() const {
    if (effect.kind == EffectKind::OneInput) return 1;
    return type.pictures.empty() ? 2 : std::min<std::size_t>(2, type.pictures.size());
}

/// A mask in the first place is left out: the formats are tried there.
bool Subject::IsMask(std::size_t input) const {
    return input > 0 && input < type.pictures.size() && type.pictures[input] == PictureRole::Mask;
}

std::vector<DataHandle> Subject::MakeInputs(PixFmt format, std::uint32_t width, std::uint32_t height,
                                            std::uint32_t seed) const {
    std::vector<DataHandle> inputs;
    for (std::size_t i = 0; i < CountInputs(); ++i) {
        VideoHandle const picture = MakeNoise(GetContext(), IsMask(i) ? PixFmt::GRAY8 : format, width, height,
                                              seed + static_cast<std::uint32_t>(i));
        if (IsMask(i)) PaintStrokes(picture->GetMutablePlane(0));
        inputs.push_back(picture);
    }
    return inputs;
}

std::vector<DataHandle> Run(IEffect& effect, std::vector<DataHandle>& inputs) {
    if (auto* const one = dynamic_cast<IOneInputEffect*>(&effect)) {
        one->ProcessData(inputs.at(0));
        return {inputs[0]};
    }
    if (auto* const two = dynamic_cast<ITwoInputEffect*>(&effect)) {
        two->ProcessData(inputs.at(0), inputs.at(1));
        return {inputs[0]};
    }
    DataHandle const result = effect.ProcessData(inputs);
    return result ? std::vector<DataHandle>{result} : inputs;
}

Outcome Try(IEffect& effect, std::vector<DataHandle> inputs, Journal& journal) {
    std::vector<Sight> const before = SeeAll(inputs);
    auto const refuse = [&](std::string const& reason) -> Outcome {
        journal.Require(SeeAll(inputs) == before, "changes the caller's picture before it refuses it");
        return {reason, {}};
    };
    try {
        return {"", Run(effect, inputs)};
    } catch (ProcException const& refusal) {
        std::string const reason = DescribeException(refusal);
        journal.Require(reason.size() >= SHORTEST_REASON, "refuses a picture without saying why");
        return refuse(reason);
    } catch (std::bad_alloc const&) {
        return refuse("not enough memory");
    } catch (...) {
        std::string const reason = DescribeCurrentException();
        journal.Break("throws what is no ProcException: " + reason);
        return refuse(reason);
    }
}

} // namespace Velnor::Proc::Check
