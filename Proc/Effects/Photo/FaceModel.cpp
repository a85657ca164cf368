#include "Proc/Effects/Photo/FaceModel.h"

#include "Proc/Host/MemoryRoom.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"

#include <fstream>
#include <mutex>
#include <system_error>

namespace Velnor::Proc {
namespace {

namespace fs = std::filesystem;

LandmarkModel ReadModel(fs::path const& file) {
    auto const model = std::make_shared<dlib::shape_predictor>();
    try {
        std::ifstream stream(file, std::ios::binary);
        dlib::deserialize(*model, stream);
    } catch (std::exception const& error) { // Sizes in a damaged file also end in std::bad_alloc or std::length_error.
        std::error_code unknown;
        std::uint64_t const bytes = fs::file_size(file, unknown);
        if (!unknown) RequireRoom(2 * bytes); // What a sound one takes at most.
        VELNOR_THROW(EffectException, "The landmark model " + file.string() + " cannot be read: " + error.what() + ".");
    }
    if (model->num_parts() != Face::LANDMARKS_COUNT)
        VELNOR_THROW(EffectException, "The landmark model " + file.string() + " finds " +
                                          std::to_string(model->num_parts()) + " landmarks; " +
                                          std::to_string(Face::LANDMARKS_COUNT) + " are needed.");
    return model;
}

} // namespace

fs::path GetDefaultLandmarkFile() { return VELNOR_LANDMARKS_FILE; }

void RequireLandmarkFile(fs::path const& file) {
    std::error_code error;
    if (fs::is_regular_file(file, error)) return;
    VELNOR_THROW(EffectException, "There is no landmark model " + file.string() +
                                      ", which the face detector needs; Debian has one in its package libdlib-data.");
}

LandmarkModel LoadLandmarkModel(fs::path const& file) {
    static std::mutex mutex;
    static fs::path lastFile;
    static LandmarkModel last;
    std::lock_guard const lock(mutex);
    if (last && lastFile == file) return last;
    LandmarkModel const model = ReadModel(file);
    lastFile = file;
    last = model;
    return model;
}

} // namespace Velnor::Proc
