#pragma once

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"

#include <string>
#include <utility>
#include <vector>

namespace Velnor::Proc {

/// Asks the host's detector for the faces of pictures.
class FaceFinder {
public:
    explicit FaceFinder(intrusive_ptr<IOneInputEffectVideo> faceDetector) : detector(std::move(faceDetector)) {}

    /// The faces of the picture, the largest first. None is no error: a line of the verbose log says so.
    std::vector<Face> Find(DataHandle const& data, std::string const& effectName) const {
        DataHandle seen = data; // The detector leaves the picture as it is; what it does to the handle is its business.
        detector->ProcessData(seen);
        std::vector<Face> faces =
            dynamic_cast<SettingsEffectFaceDetector const&>(detector->GetSettingsBase()).GetFaces();
        if (faces.empty()) VLOG(30) << effectName << " finds no face";
        return faces;
    }

private:
    intrusive_ptr<IOneInputEffectVideo> detector;
};

} // namespace Velnor::Proc
