#include "Tools/velnor/Logging.h"

#include <glog/logging.h>

namespace Velnor::Tool {

void PrepareLogging() {
    FLAGS_logtostderr = true;
    FLAGS_minloglevel = google::GLOG_WARNING;
    google::InitGoogleLogging("velnor");
}

void SetVerboseLevel(int level) {
    if (level == 0) return;
    FLAGS_v = level;
    FLAGS_minloglevel = google::GLOG_INFO;
}

} // namespace Velnor::Tool
