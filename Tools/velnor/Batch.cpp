#include "Tools/velnor/Batch.h"

#include "Tools/velnor/Console.h"
#include "Tools/velnor/Json.h"
#include "Tools/velnor/StandardStreams.h"

#include <system_error>
#include <thread>
#include <utility>

namespace Velnor::Tool {

Batch::Batch(Workshop const& workshop, PlanReader planReader, unsigned jobs)
    : shop(workshop), jobsCount(jobs), plans(std::move(planReader)) {}

ExitCode Batch::Run() {
    {
        std::vector<std::jthread> others;
        try {
            for (unsigned i = 1; i < jobsCount; ++i) others.emplace_back([this] { Work(); });
        } catch (std::system_error const&) { // Fewer do it too.
        }
        Work();
    }
    if (error) std::rethrow_exception(error);
    return Summarise();
}

void Batch::Work() noexcept {
    try {
        WorkThrowing();
    } catch (...) {
        std::lock_guard const lock(mutex);
        if (!error) error = std::current_exception();
        shop.controller->RequestStop();
        printed.notify_all();
    }
}

void Batch::WorkThrowing() {
    while (std::optional<OutputPlan> const plan = Take()) Deliver(plan->index, PhotoRun(shop, *plan).Run());
}

std::optional<OutputPlan> Batch::Take() {
    std::unique_lock lock(mutex);
    printed.wait(lock, [this] { return taken < next - 1 + MOST_WAITING || error; });
    if (error) return std::nullopt;
    std::optional<OutputPlan> plan = plans.Next();
    isStopped = isStopped || (plan && shop.controller->IsStopRequested());
    if (isStopped) return std::nullopt;
    if (plan) taken = plan->index;
    return plan;
}

void Batch::Deliver(std::size_t index, PhotoReport report) {
    std::lock_guard const lock(mutex);
    waiting.emplace(index, std::move(report));
    for (auto at = waiting.find(next); at != waiting.end(); at = waiting.find(++next)) {
        Print(at->second);
        waiting.erase(at);
    }
    printed.notify_all();
}

void Batch::Print(PhotoReport const& photo) {
    ExitCode const code = photo.report.code;
    if (code == ExitCode::Stopped) isStopped = true;
    if (code == ExitCode::Done)
        ++done;
    else if (firstFailure == ExitCode::Done)
        firstFailure = code;
    shop.progress.Print([&] { PrintLines(photo); });
}

void Batch::PrintLines(PhotoReport const& photo) const {
    bool const isStop = photo.report.code == ExitCode::Stopped; // Said once for all.
    std::string const input = photo.inputs.front().string();
    auto const tell = [&](char const* event, std::string const& text) {
        if (shop.progress.IsJson())
            PrintAside(WriteLine({{"event", event}, {"input", input}, {"text", text}}));
        else
            PrintError(text);
    };
    if (!photo.report.text.empty() && !isStop) tell("error", photo.report.text);
    for (std::string const& warning : photo.warnings) tell("warning", warning);
    std::string const told = shop.options.asJson ? FormatJson(photo) : FormatResults(photo);
    if (shop.options.output == STANDARD_STREAM)
        PrintAside(told); // Standard output is the picture's.
    else
        Tool::Print(told);
}

ExitCode Batch::Summarise() const {
    if (isStopped) {
        shop.progress.Print([this] {
            if (shop.progress.IsJson())
                PrintAside(WriteLine({{"event", "stopped"}}));
            else
                PrintError("stopped");
        });
        return ExitCode::Stopped;
    }
    if (firstFailure == ExitCode::Done) return ExitCode::Done;
    return done > 0 ? ExitCode::SomeFailed : firstFailure;
}

} // namespace Velnor::Tool
