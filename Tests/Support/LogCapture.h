#pragma once

#include <glog/logging.h>

#include <string>
#include <vector>

namespace Velnor::Proc::Testing {

/// Collects glog lines, as "file: message", at a verbose level of the test's choice.
class LogCapture : public google::LogSink {
public:
    explicit LogCapture(int verboseLevel) : levelBefore(FLAGS_v), logToStderrBefore(FLAGS_stderrthreshold) {
        FLAGS_v = verboseLevel;
        FLAGS_stderrthreshold = google::GLOG_FATAL;
        google::AddLogSink(this);
    }
    ~LogCapture() override {
        google::RemoveLogSink(this);
        FLAGS_stderrthreshold = logToStderrBefore;
        FLAGS_v = levelBefore;
    }
    LogCapture(LogCapture const&) = delete;
    LogCapture& operator=(LogCapture const&) = delete;

    void send(google::LogSeverity, char const*, char const* baseName, int, std::tm const*, char const* message,
              std::size_t length) override {
        lines.push_back(std::string(baseName) + ": " + std::string(message, length));
    }

    std::vector<std::string> lines;

private:
    int levelBefore;
    int logToStderrBefore;
};

} // namespace Velnor::Proc::Testing
