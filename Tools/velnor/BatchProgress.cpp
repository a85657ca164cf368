#include "Tools/velnor/BatchProgress.h"

#include "Tools/velnor/Json.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Velnor::Tool {
namespace {

constexpr std::chrono::milliseconds BETWEEN_LINES{100};
constexpr std::chrono::milliseconds BETWEEN_JSON{250};

std::string DescribeTime(double seconds) {
    auto const whole = static_cast<long>(std::ceil(seconds));
    constexpr long MINUTE = 60;
    constexpr long HOUR = 60 * MINUTE;
    if (whole < 2 * MINUTE) return std::to_string(whole) + " s";
    if (whole < 2 * HOUR) return std::to_string(whole / MINUTE) + " min";
    return std::to_string(whole / HOUR) + " h " + std::to_string(whole % HOUR / MINUTE) + " min";
}

double Round(double value) { return std::round(value * 10) / 10; }

} // namespace

BatchProgress::BatchProgress(ProgressKind kind, bool allowsLine, std::size_t photosCount)
    : isJson(kind == ProgressKind::Json), count(photosCount), line(allowsLine && kind == ProgressKind::Auto) {}

BatchProgress::~BatchProgress() {
    if (isJson) Show();
}

void BatchProgress::Print(std::function<void()> const& print) {
    std::lock_guard const lock(mutex);
    line.Clear();
    print();
}

void BatchProgress::Finish(std::string const& photo, ExitCode code, bool isSkipped) {
    std::lock_guard const lock(mutex);
    ++done;
    if (code != ExitCode::Done) ++failed;
    if (isSkipped) ++skipped;
    if (!isJson) return;
    Json event{{"event", "photograph"}, {"input", photo}, {"code", static_cast<int>(code)}, {"skipped", isSkipped}};
    event["done"] = done;
    event["count"] = count;
    PrintAside(WriteLine(event));
}

void BatchProgress::Begin(PhotoProgress& photo) {
    std::lock_guard const lock(mutex);
    running.push_back(&photo);
}

void BatchProgress::End(PhotoProgress& photo) {
    std::lock_guard const lock(mutex);
    std::erase(running, &photo);
}

void BatchProgress::Touch() {
    Clock::rep const now = Clock::now().time_since_epoch().count();
    Clock::rep due = nextShow;
    Clock::duration const pause = isJson ? Clock::duration(BETWEEN_JSON) : Clock::duration(BETWEEN_LINES);
    // Of several threads that come at the same time one shows it.
    if (now >= due && nextShow.compare_exchange_strong(due, now + pause.count())) Show();
}

void BatchProgress::Show() {
    std::lock_guard const lock(mutex);
    if (isJson)
        PrintAside(FormatJson());
    else
        line.Show(FormatLine());
}

/// Photographs that were left out took no time, and say nothing of how long the others will take.
BatchProgress::State BatchProgress::Measure() const {
    double ofRunning = 0;
    for (PhotoProgress const* photo : running) ofRunning += photo->fraction;
    double const over = static_cast<double>(done) + ofRunning;
    double const worked = over - static_cast<double>(skipped);
    double const seconds = std::chrono::duration<double>(Clock::now() - start).count();
    State state;
    state.fraction = count == 0 ? 1.0 : std::min(1.0, over / static_cast<double>(count));
    if (worked <= 0 || seconds <= 0) return state;
    state.perMinute = worked / seconds * 60;
    state.secondsLeft = std::max(0.0, (static_cast<double>(count) - over) / worked * seconds);
    return state;
}

std::string BatchProgress::FormatLine() const {
    State const state = Measure();
    std::string text = std::to_string(done) + " of " + std::to_string(count) + " done";
    if (failed > 0) text += ", " + std::to_string(failed) + " failed";
    text += " | " + std::to_string(static_cast<int>(state.fraction * 100)) + " %";
    constexpr double TRIED_ENOUGH = 1; // Second, before which a rate means nothing.
    if (state.secondsLeft >= 0 && Clock::now() - start > std::chrono::duration<double>(TRIED_ENOUGH))
        text +=
            " | " + Json(Round(state.perMinute)).dump() + " a minute | " + DescribeTime(state.secondsLeft) + " left";
    if (!running.empty()) text += " | " + running.front()->name + ": " + running.front()->step;
    return text;
}

std::string BatchProgress::FormatJson() const {
    State const state = Measure();
    Json event{{"event", "progress"}, {"done", done}, {"failed", failed}, {"skipped", skipped}, {"count", count}};
    event["percent"] = Round(state.fraction * 100);
    event["per-minute"] = Round(state.perMinute);
    event["seconds-left"] = state.secondsLeft < 0 ? Json() : Json(Round(state.secondsLeft));
    event["photographs"] = Json::array();
    for (PhotoProgress const* photo : running)
        event["photographs"].push_back(
            {{"input", photo->name}, {"step", photo->step}, {"percent", Round(photo->fraction * 100)}});
    return WriteLine(event);
}

PhotoProgress::PhotoProgress(BatchProgress& batchProgress, std::string photoName,
                             intrusive_ptr<Core::IProgressController> photosController)
    : batch(batchProgress), controller(std::move(photosController)), name(std::move(photoName)) {
    batch.Begin(*this);
    if (batch.IsShown()) controller->RegisterEventHandler(this);
}

PhotoProgress::~PhotoProgress() {
    controller->UnregisterEventHandler(this);
    batch.End(*this);
}

void PhotoProgress::Announce(std::string const& photo, std::string const& photosStep) {
    if (!batch.IsShown()) return;
    {
        std::lock_guard const lock(batch.mutex);
        name = photo;
        step = photosStep;
    }
    if (batch.isJson)
        batch.Touch();
    else
        batch.Show();
}

void PhotoProgress::OnProgress(double done) {
    fraction = done;
    batch.Touch();
}

} // namespace Velnor::Tool
