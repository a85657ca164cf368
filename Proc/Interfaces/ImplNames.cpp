#include "Proc/Interfaces/ImplNames.h"

namespace Velnor::Proc {

std::string const ImplNames::DEFAULT = "Default";
std::string const ImplNames::VELNOR = "Velnor";
std::string const ImplPhotoNames::OPENCV = "OpenCV";
std::string const ImplPhotoNames::IMAGEMAGICK = "ImageMagick";
std::string const ImplPhotoNames::DLIB = "dlib";

} // namespace Velnor::Proc
