#pragma once

namespace Velnor::Proc::Testing {

// Where things lie. Apart from the tests, which are then compiled alike in every tree: a compiler's cache knows them.

extern char const* const SOURCE_DIR;   ///< The root of the sources.
extern char const* const LUMETTA_FILE; ///< The plug-in that was built.
extern char const* const TEST_PLUGINS; ///< Folder of the plug-ins that only tests load.

} // namespace Velnor::Proc::Testing
