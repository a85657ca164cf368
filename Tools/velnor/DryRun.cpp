#include "Tools/velnor/DryRun.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/PictureOutput.h"

namespace Velnor::Tool {
namespace {

struct Forecast {
    std::string action;
    std::string reason;
    ExitCode code = ExitCode::Done;
};

Forecast JudgeOutput(Workshop const& shop, OutputPlan const& plan, Journal::Past const& past) {
    if (plan.output.empty()) return {"write", "nothing but what the effects find out"};
    RequireOptions(plan.output, shop.options.files.ForWriting());
    CheckOutputs({plan.output}, true);
    if (shop.chain.Cuts()) return {"write", "it and the other pieces"};
    if (!past.ours.empty()) return {"replace", "a run that was stopped left it"};
    OutputPolicy::Judgement const judgement = shop.policy.Judge(plan.output, plan.inputs);
    switch (judgement.verdict) {
    case Verdict::Write:
        return {"write", judgement.reason};
    case Verdict::Replace:
        return {"replace", judgement.reason};
    case Verdict::Leave:
        return {"skip", judgement.reason};
    default:
        return {"fail", plan.output.string() + " exists already; --force replaces it", ExitCode::OutputFailed};
    }
}

Forecast Judge(Workshop const& shop, OutputPlan const& plan) {
    try {
        for (std::filesystem::path const& input : plan.inputs)
            if (std::optional<Failure> const problem = FindProblem(input.string())) throw *problem;
        Journal::Past past;
        if (shop.journal != nullptr) past = shop.journal->Recall(plan);
        return past.isDone ? Forecast{"skip", past.reason} : JudgeOutput(shop, plan, past);
    } catch (...) {
        Report const report = ReportCurrentException();
        return {"fail", report.text, report.code};
    }
}

std::string Format(OutputPlan const& plan, Forecast const& forecast) {
    std::string const input = plan.inputs.front().string();
    std::string const others = plan.inputs.size() > 1 ? " and " + std::to_string(plan.inputs.size() - 1) + " more" : "";
    bool const isNamed = forecast.action != "fail" && !plan.output.empty();
    return input + others + ": " + forecast.action + (isNamed ? " " + plan.output.string() : "") + ": " +
           forecast.reason + "\n";
}

std::string FormatJson(OutputPlan const& plan, Forecast const& forecast) {
    Json entry{{"input", plan.inputs.front().string()}, {"outputs", Json::array()}, {"action", forecast.action}};
    if (!plan.output.empty()) entry["outputs"].push_back(plan.output.string());
    entry["reason"] = forecast.reason;
    entry["code"] = static_cast<int>(forecast.code);
    return WriteLine(entry);
}

} // namespace

ExitCode RunDry(Workshop const& shop, PlanReader plans) {
    ExitCode firstFailure = ExitCode::Done;
    bool isOneDone = false;
    for (std::optional<OutputPlan> plan = plans.Next(); plan; plan = plans.Next()) {
        Forecast const forecast = Judge(shop, *plan);
        Print(shop.options.asJson ? FormatJson(*plan, forecast) : Format(*plan, forecast));
        if (forecast.code == ExitCode::Done)
            isOneDone = true;
        else if (firstFailure == ExitCode::Done)
            firstFailure = forecast.code;
    }
    return firstFailure != ExitCode::Done && isOneDone ? ExitCode::SomeFailed : firstFailure;
}

} // namespace Velnor::Tool
