#pragma once

#include "Core/Export.h"

#include <string>

namespace Velnor::Proc {

/// Names under which implementations of an effect are registered. Read at the call: these are another library's
/// objects, which need not exist yet when a plug-in's own statics are made.
struct VELNOR_API ImplNames {
    static std::string const DEFAULT; ///< Whichever implementation the host prefers.
    static std::string const VELNOR;  ///< The framework's own.
};

/// Further implementations of the photo effects, by the library that does the work.
struct VELNOR_API ImplPhotoNames {
    static std::string const OPENCV;
    static std::string const IMAGEMAGICK;
    static std::string const DLIB;
};

} // namespace Velnor::Proc
