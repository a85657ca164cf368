#include "Tests/Support/Places.h"

namespace Velnor::Proc::Testing {

constinit char const* const SOURCE_DIR = VELNOR_SOURCE_DIR;
constinit char const* const LUMETTA_FILE = VELNOR_LUMETTA_FILE;
constinit char const* const TEST_PLUGINS = VELNOR_TEST_PLUGINS;

} // namespace Velnor::Proc::Testing
