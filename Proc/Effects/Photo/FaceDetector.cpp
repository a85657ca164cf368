// FaceDetector: dlib's frontal face detector and its 68 landmarks.
//
// Boxes come from histograms of oriented gradients (Dalal and Triggs 2005) on a grey copy of the picture, scaled so
// that the smallest face that is looked for has the side that the detector was trained on, but never to more than
// LARGEST_AREA. Landmarks come from an ensemble of regression trees (Kazemi and Sullivan 2014), which reads single
// samples: each face is cut out of the full picture and reduced to a few hundred pixels by the mean over areas, so that
// noise of a large picture does not move them.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Photo/FaceModel.h"
#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsResizer.h"

#include <dlib/image_processing/frontal_face_detector.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace Velnor::Proc {
namespace {

constexpr double TRAINED_SIDE = 80;     ///< Of the smallest face that the detector finds.
constexpr double LARGEST_AREA = 1.25e6; ///< Pixels searched: a third of a second.
constexpr double LANDMARK_SIDE = 300;   ///< Of a face at which its landmarks are found.

/// Unpacking the detector takes half a second, copying it a hundredth of that.
dlib::frontal_face_detector const& GetDetector() {
    static dlib::frontal_face_detector const detector = dlib::get_frontal_face_detector();
    return detector;
}

/// What the picture is scaled by for the search.
double ChooseScale(FrameFormat const& frame, int smallestFace) {
    double const area = static_cast<double>(frame.width) * frame.height;
    return std::min(TRAINED_SIDE / smallestFace, std::sqrt(LARGEST_AREA / area));
}

/// The box and half of it around, as far as the picture goes.
Rectangle GetSurroundings(Face const& face, FrameFormat const& frame) {
    auto const cut = [](double place, std::uint32_t side) {
        return static_cast<std::uint32_t>(std::clamp(place, 0.0, static_cast<double>(side)));
    };
    std::uint32_t const left = cut(face.left - face.width / 2.0, frame.width - 1);
    std::uint32_t const top = cut(face.top - face.height / 2.0, frame.height - 1);
    return {left, top, std::max(1U, cut(face.left + face.width * 1.5, frame.width) - left),
            std::max(1U, cut(face.top + face.height * 1.5, frame.height) - top)};
}

Face MakeFace(dlib::rectangle const& box, double scaleX, double scaleY) {
    auto const toPicture = [](double place, double scale) { return static_cast<int>(std::lround(place / scale)); };
    Face face;
    face.left = toPicture(static_cast<double>(box.left()), scaleX);
    face.top = toPicture(static_cast<double>(box.top()), scaleY);
    face.width = toPicture(static_cast<double>(box.width()), scaleX);
    face.height = toPicture(static_cast<double>(box.height()), scaleY);
    return face;
}

} // namespace

class FaceDetector : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectFaceDetector> {
public:
    FaceDetector(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplPhotoNames::DLIB),
          converter(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))),
          resizer(MakeOneInput(SettingsResizer())) {}

    void ProcessInternal(DataHandle& data) override {
        settings.SetFaces({});
        std::string const model = settings.GetModel();
        std::filesystem::path const file = model.empty() ? GetDefaultLandmarkFile() : std::filesystem::path(model);
        RequireLandmarkFile(file);
        DataHandle grey = AsVideo(ConstDataHandle(data)).MakeCopy(CopyMode::Share);
        converter->ProcessData(grey);
        try {
            std::vector<Face> faces = FindBoxes(grey);
            for (Face& face : faces) FindLandmarks(AsVideo(ConstDataHandle(grey)), file, face);
            settings.SetFaces(std::move(faces));
        } catch (dlib::error const& error) {
            VELNOR_THROW(EffectException, std::string("The face detector was stopped by dlib: ") + error.what() + ".");
        }
    }

private:
    std::vector<Face> FindBoxes(DataHandle grey) {
        FrameFormat const frame = grey->GetFrameFormat();
        Resize(grey, ChooseScale(frame, settings.GetSmallestFace()));
        FrameFormat const searched = grey->GetFrameFormat();
        std::vector<Face> faces;
        if (!detector) detector = GetDetector();
        for (dlib::rectangle const& box : (*detector)(GreyView{AsVideo(grey).GetPlane(0)}))
            faces.push_back(MakeFace(box, static_cast<double>(searched.width) / frame.width,
                                     static_cast<double>(searched.height) / frame.height));
        std::ranges::stable_sort(faces, std::greater(),
                                 [](Face const& face) { return std::int64_t{face.width} * face.height; });
        return faces;
    }

    void FindLandmarks(IDataVideo const& grey, std::filesystem::path const& file, Face& face) {
        if (!landmarks || landmarksFile != file) {
            landmarks = LoadLandmarkModel(file);
            landmarksFile = file;
        }
        Rectangle const place = GetSurroundings(face, grey.GetFrameFormat());
        DataHandle part = grey.MakePart(place);
        Resize(part, std::min(1.0, LANDMARK_SIDE / std::max(1, face.width)));
        FrameFormat const reduced = part->GetFrameFormat();
        double const scaleX = static_cast<double>(reduced.width) / place.width;
        double const scaleY = static_cast<double>(reduced.height) / place.height;
        auto const inPart = [](double at, double origin, double scale) { return std::lround((at - origin) * scale); };
        dlib::rectangle const box(inPart(face.left, place.x, scaleX), inPart(face.top, place.y, scaleY),
                                  inPart(face.left + face.width, place.x, scaleX) - 1,
                                  inPart(face.top + face.height, place.y, scaleY) - 1);
        dlib::full_object_detection const found = (*landmarks)(GreyView{AsVideo(part).GetPlane(0)}, box);
        for (std::size_t i = 0; i < Face::LANDMARKS_COUNT; ++i) {
            dlib::point const point = found.part(i);
            // The middle of a reduced sample lies between those of the samples that it is the mean of.
            face.landmarks[i] = {static_cast<float>((static_cast<double>(point.x()) + 0.5) / scaleX - 0.5 + place.x),
                                 static_cast<float>((static_cast<double>(point.y()) + 0.5) / scaleY - 0.5 + place.y)};
        }
    }

    void Resize(DataHandle& grey, double scale) {
        RunWith(*resizer,
                SettingsResizer()
                    .SetMethod(scale < 1 ? SettingsResizer::AREA : SettingsResizer::BILINEAR)
                    .SetMode(SettingsResizer::BY_FACTOR)
                    .SetFactor(scale),
                grey);
    }

    intrusive_ptr<IOneInputEffectVideo> converter;
    intrusive_ptr<IOneInputEffectVideo> resizer;
    std::optional<dlib::frontal_face_detector> detector; ///< One's own: it holds the picture that it searches.
    LandmarkModel landmarks;
    std::filesystem::path landmarksFile; ///< What the landmark model was read from.
};

} // namespace Velnor::Proc

Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId) {
    using namespace Velnor::Proc;
    return classId == SettingsEffectFaceDetector::CLASS_ID ? &MakeEffect<FaceDetector> : nullptr;
}
