// GrabCut: makes the mask of an object that was marked by strokes on it and on its background.
//
//     cut    = segmentation of picture and strokes
//     mask   = alpha value where the cut has the object and the picture is not clear, 0 elsewhere
//     smooth = morphology on the mask with a black border, so that an edge of the picture is no edge of the object
//     result = mask, with the strokes over it when they are kept
//
// Strokes of one kind only mark nothing to be told apart: the result is then a copy of them.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMorphology.h"

#include <algorithm>
#include <string>

namespace Velnor::Proc {
namespace {

using Byte = std::uint8_t;

/// Whether the strokes hold both values; what is missing in words, empty when nothing is.
std::string FindMissingStrokes(ConstPlane const& strokes, Byte foreground, Byte background) {
    bool hasForeground = false;
    bool hasBackground = false;
    for (std::uint64_t y = 0; y < strokes.GetHeight() && !(hasForeground && hasBackground); ++y) {
        Byte const* const row = strokes.GetRow(y);
        Byte const* const end = row + strokes.GetWidth();
        hasForeground = hasForeground || std::find(row, end, foreground) != end;
        hasBackground = hasBackground || std::find(row, end, background) != end;
    }
    if (hasForeground && hasBackground) return {};
    std::string const object = "the object (value " + std::to_string(foreground) + ")";
    std::string const ground = "the background (value " + std::to_string(background) + ")";
    std::string const missing = hasForeground ? ground : (hasBackground ? object : object + " or on " + ground);
    return "The strokes picture has no strokes on " + missing + ", so nothing was cut out.";
}

void RequireSameSize(IDataVideo const& picture, std::string const& what, FrameFormat const& wanted) {
    FrameFormat const& size = picture.GetFrameFormat();
    if (!IsSameSize(size, wanted))
        VELNOR_THROW(EffectException, what + " " + SizeText(size) + " pixels, " + SizeText(wanted) + " are needed.");
}

} // namespace

class GrabCut : public EffectBaseTwoInput<ITwoInputEffectVideo, SettingsEffectGrabCut> {
public:
    GrabCut(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseTwoInput(effectFactory, effectContext),
          morphology(MakeOneInput(SettingsEffectMorphology())),
          alphaExtractor(MakeOneInput(SettingsEffectAlphaExtractor())) {}

    using EffectBaseTwoInput::SetSettings;

    void SetSettings(SettingsEffectGrabCut const& next) override {
        bool const isOpenCv = next.GetAlgorithm() == SettingsEffectGrabCut::OPENCV;
        SettingsEffectGrabCutSegmentation strokes =
            SettingsEffectGrabCutSegmentation().SetForeground(next.GetForeground()).SetBackground(next.GetBackground());
        // Made before the settings are taken over: they never stand beside a segmentation that is not theirs.
        auto const made = MakeTwoInput(strokes, isOpenCv ? ImplPhotoNames::OPENCV : ImplNames::DEFAULT);
        made->SetProgressController(next.ShowProgress() ? GetProgress().controller
                                                        : Core::ProgressControllerStub::Create());
        if (next.GetSmooth() != 0) {
            morphology->SetSettings(
                SettingsEffectMorphology(SettingsEffectMorphology::SMOOTH, 1).SetIterations(next.GetSmooth()));
        }
        segmentation = made;
        settings = next;
    }

    void ProcessInternal(DataHandle& first, ConstDataHandle const& second) override {
        warning.clear();
        if (segmentation == nullptr)
            VELNOR_THROW(EffectException, "The cut-out has no settings yet; they decide how it is done.");
        IDataVideo const& strokes = AsVideo(second);
        RequireOneByteAPixel("The strokes are", strokes);
        warning = FindMissingStrokes(strokes.GetPlane(0), GetForeground(), static_cast<Byte>(settings.GetBackground()));
        if (!warning.empty()) {
            first = strokes.MakeCopy(CopyMode::Independent);
            return;
        }

        DataHandle mask = AsVideo(first).MakeCopy(CopyMode::Value);
        segmentation->ProcessData(mask, second);
        if (GetProgress().controller->IsStopRequested()) {
            first = mask; // The bare cut, or the picture when the segmentation stopped too.
            return;
        }
        RequireOneByteAPixel("The cut is", AsVideo(mask));
        RequireSameSize(AsVideo(mask), "The cut has", strokes.GetFrameFormat());
        TakeAlpha(AsVideo(mask), first);
        if (settings.GetSmooth() != 0) mask = Smooth(mask);
        if (settings.GetKeepSelection()) KeepStrokes(AsVideo(mask), strokes);
        first = mask;
    }

    void AddStatistic(Core::Property& statistics) override {
        if (!warning.empty()) statistics.SetChild(WARNING_NODE, warning);
    }

private:
    Byte GetForeground() const { return static_cast<Byte>(settings.GetForeground()); }

    /// The alpha value in the place of the cut's, where the picture shows anything.
    void TakeAlpha(IDataVideo& mask, DataHandle const& picture) const {
        DataHandle alpha = AsVideo(picture).MakeCopy(CopyMode::Value);
        alphaExtractor->ProcessData(alpha);
        if (alpha) {
            RequireOneByteAPixel("The picture's alpha is", AsVideo(alpha));
            RequireSameSize(AsVideo(alpha), "The picture's alpha has", mask.GetFrameFormat());
        }
        Byte const foreground = GetForeground();
        auto const object = static_cast<Byte>(settings.GetAlpha());
        MutablePlane const plane = mask.GetMutablePlane(0);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
            Byte* const row = plane.GetRow(y);
            for (std::uint64_t x = 0; x < plane.GetWidth(); ++x) row[x] = row[x] == foreground ? object : Byte{0};
            if (!alpha) continue;
            Byte const* const opacity = AsVideo(alpha).GetPlane(0).GetRow(y);
            for (std::uint64_t x = 0; x < plane.GetWidth(); ++x) row[x] = opacity[x] != 0 ? row[x] : Byte{0};
        }
    }

    DataHandle Smooth(DataHandle const& mask) const {
        auto const border = static_cast<std::uint32_t>(settings.GetSmooth());
        FrameFormat const frame = mask->GetFrameFormat();
        FrameFormat larger = frame;
        larger.width += 2 * border;
        larger.height += 2 * border;
        VideoHandle const framed = context->CreateImage(PixFmt::GRAY8, larger);
        framed->Fill(Color::Black(Color::Opacity::Opaque));
        CopyDataVideo(ConstVideoHandle(&AsVideo(mask)), framed, settings.GetSmooth(), settings.GetSmooth());
        DataHandle smooth = framed;
        morphology->ProcessData(smooth);
        // A picture of its own, without the border's memory around it.
        VideoHandle const result = context->CreateImage(PixFmt::GRAY8, frame);
        VideoHandle const cut = AsVideo(smooth).MakePart({border, border, frame.width, frame.height});
        CopyPlane(cut->GetPlane(0), result->GetMutablePlane(0));
        result->CopyAttributes(*mask);
        return result;
    }

    /// Every stroke, whatever its value.
    static void KeepStrokes(IDataVideo& mask, IDataVideo const& strokes) {
        MutablePlane const plane = mask.GetMutablePlane(0);
        ConstPlane const marks = strokes.GetPlane(0);
        for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
            Byte* const row = plane.GetRow(y);
            Byte const* const mark = marks.GetRow(y);
            for (std::uint64_t x = 0; x < plane.GetWidth(); ++x) row[x] = mark[x] != 0 ? mark[x] : row[x];
        }
    }

    intrusive_ptr<ITwoInputEffectVideo> segmentation; ///< Made anew with each settings.
    intrusive_ptr<IOneInputEffectVideo> morphology;
    intrusive_ptr<IOneInputEffectVideo> alphaExtractor;
    std::string warning; ///< About the last picture.
};

VELNOR_EFFECT(SettingsEffectGrabCut, TwoInput, GrabCut)

} // namespace Velnor::Proc
