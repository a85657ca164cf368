#pragma once

#include "Core/Progress.h"
#include "Tools/velnor/BatchOptions.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/ExitCodes.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Velnor::Tool {

class PhotoProgress;

/// How far a batch is, shown on standard error: as a line at the bottom of a terminal, or as lines of JSON.
/// Thread-safe.
class BatchProgress {
public:
    /// @param allowsLine  whether a line may be shown: not where logs go to the terminal too
    BatchProgress(ProgressKind kind, bool allowsLine, std::size_t photosCount);
    ~BatchProgress(); ///< Shows the end.
    BatchProgress(BatchProgress const&) = delete;
    BatchProgress& operator=(BatchProgress const&) = delete;

    bool IsJson() const { return isJson; }
    bool IsShown() const { return isJson || line.IsShown(); }

    /// Does what prints something else, with the line out of its way.
    void Print(std::function<void()> const& print);

    /// Counts a photograph that is over.
    void Finish(std::string const& photo, ExitCode code, bool isSkipped);

private:
    friend class PhotoProgress;
    using Clock = std::chrono::steady_clock;

    void Begin(PhotoProgress& photo);
    void End(PhotoProgress& photo);
    void Touch(); ///< Shows anew when it is time.
    void Show();
    std::string FormatLine() const;
    std::string FormatJson() const;

    /// Of the photographs together, 0 to 1, and what follows from it.
    struct State {
        double fraction = 0;
        double perMinute = 0;
        double secondsLeft = -1; ///< Below 0: not known yet.
    };
    State Measure() const;

    bool const isJson;
    std::size_t const count;
    Clock::time_point const start = Clock::now();
    std::atomic<Clock::rep> nextShow{0};
    mutable std::mutex mutex; ///< Guards what follows.
    ProgressLine line;
    std::vector<PhotoProgress*> running; ///< Those that began first stand first.
    std::size_t done = 0;                ///< Failed and skipped ones too.
    std::size_t failed = 0;
    std::size_t skipped = 0;
};

/// How far one photograph is, from its begin to its end.
class PhotoProgress : public Core::IProgressObserver {
public:
    PhotoProgress(BatchProgress& batchProgress, std::string name,
                  intrusive_ptr<Core::IProgressController> photosController);
    ~PhotoProgress() override;
    PhotoProgress(PhotoProgress const&) = delete;
    PhotoProgress& operator=(PhotoProgress const&) = delete;

    void Announce(std::string const& photo, std::string const& step); ///< What is worked on.
    void OnProgress(double fraction) override;

private:
    friend class BatchProgress;

    BatchProgress& batch;
    intrusive_ptr<Core::IProgressController> const controller;
    std::string name; ///< Under the batch's lock, as the step is.
    std::string step;
    std::atomic<double> fraction{0};
};

} // namespace Velnor::Tool
