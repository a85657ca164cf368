// RemoveBackground: finds the subject and takes away what is behind it.
//
//     strokes = those given, else what a network is sure of, if one is named, else persons by their faces or what
//               stands out by its colours, found on a tiny copy
//     cut     = segmentation of a small copy by the strokes
//     mask    = the cut, refined at its edge by the picture's own detail; strokes that were given bind
//     result  = the picture with the mask as its opacity, its edge freed of the old background; maybe over a new one
#include "Proc/Effects/Kit/ClearColours.h"
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Kit/RequirePictures.h"
#include "Proc/Effects/Lumetta/Faces.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/GuidedMatte.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/StrokeMarks.h"
#include "Proc/Effects/Lumetta/Kernels/Subject/SubjectMap.h"
#include "Proc/Effects/Lumetta/SubjectNetwork.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectEdgeRemove.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>

namespace Velnor::Proc {
namespace {

using Pictures = std::vector<DataHandle>;
using Byte = unsigned char;
using Kernels::FaceBox;

ConstPlane Read(DataHandle const& picture) { return AsVideo(picture).GetPlane(0); }

/// What is clear in the picture stays clear.
void KeepClear(ConstPlane const& rgba, MutablePlane const& mask) {
    for (std::uint64_t y = 0; y < mask.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < mask.GetWidth(); ++x) {
            int const product = mask.GetRow(y)[x] * rgba.GetRow(y)[4 * x + 3];
            mask.GetRow(y)[x] = static_cast<Byte>((product + 127) / 255);
        }
}

/// Lays the subject over a background of 3 bytes a pixel.
void LayOver(ConstPlane const& rgba, MutablePlane const& background) {
    for (std::uint64_t y = 0; y < background.GetHeight(); ++y) {
        Byte const* from = rgba.GetRow(y);
        Byte* to = background.GetRow(y);
        for (std::uint64_t x = 0; x < rgba.GetWidth() / 4; ++x, from += 4, to += 3)
            for (int k = 0; k < 3; ++k)
                to[k] = static_cast<Byte>((from[3] * from[k] + (255 - from[3]) * to[k] + 127) / 255);
    }
}

} // namespace

VELNOR_DECLARE_EFFECT(EdgeRemove)

class RemoveBackground : public EffectBaseVarInput<IVarInputEffectVideo, SettingsEffectRemoveBackground> {
public:
    RemoveBackground(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseVarInput(effectFactory, effectContext),
          toRgba(MakeOneInput(SettingsColorspaceConverter(PixFmt::RGBA, false))),
          toRgb(MakeOneInput(SettingsColorspaceConverter(PixFmt::RGB24, false))),
          toGrey(MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, false))),
          resizer(MakeOneInput(SettingsResizer())),
          segmentation(MakeTwoInput(SettingsEffectGrabCutSegmentation())) {}

    DataHandle ProcessInternal(Pictures const& inputs) override {
        bool const hasPicture = settings.GetResult() == SettingsEffectRemoveBackground::PICTURE;
        RequireInputs(inputs, hasPicture ? 1 : 0);
        bool const hasStrokes = inputs.size() == (hasPicture ? 3 : 2);

        DataHandle work = AsVideo(inputs[0]).MakeCopy(CopyMode::Share);
        toRgba->ProcessData(work);
        CoverClearPixels(AsVideo(work));
        warning.clear();
        settings.SetDoubt(0);
        VideoHandle const mask = FindMask(work, hasStrokes ? TakeStrokes(inputs[1]) : nullptr);
        mask->CopyAttributes(*inputs[0]);
        if (settings.GetResult() == SettingsEffectRemoveBackground::MASK) return mask;
        DataHandle const subject = CleanEdge(work, mask);
        work.reset();
        subject->CopyAttributes(*inputs[0]);
        if (settings.GetResult() == SettingsEffectRemoveBackground::CLEAR) return subject;
        return Compose(subject, hasPicture ? inputs.back() : nullptr);
    }

private:
    static constexpr std::uint32_t CUT_SIDE = 640;  ///< Of the copy that is cut.
    static constexpr std::uint32_t LOOK_SIDE = 256; ///< Of the copy on which the subject is looked for.

    static void RequireInputs(Pictures const& inputs, std::size_t further) {
        if (inputs.size() < 1 + further || inputs.size() > 2 + further)
            VELNOR_THROW(
                EffectException,
                std::string(further == 0 ? "A picture is needed" : "A picture and its new background are needed") +
                    ", and strokes may follow it; " + std::to_string(inputs.size()) + " pictures are given.");
        for (auto const& input : inputs) RequirePicture(input.get());
        if (inputs.size() == 1 + further) return;
        RequireOneSize("The strokes are", inputs[1]->GetFrameFormat(), inputs[0]->GetFrameFormat());
    }

    void AddStatistic(Core::Property& statistics) override {
        if (!warning.empty()) statistics.SetChild(WARNING_NODE, warning);
    }

    /// @param given  as of TakeStrokes; null to find them
    VideoHandle FindMask(DataHandle const& rgba, VideoHandle const& given) {
        DataHandle const small = Shrink(rgba, CUT_SIDE);
        VideoHandle const strokes = MakeStrokes(small);
        if (given)
            Kernels::ShrinkStrokes(Read(given), strokes->GetMutablePlane(0));
        else
            FindStrokes(small, strokes->GetMutablePlane(0));
        VideoHandle const mask = context->CreateImage(PixFmt::GRAY8, rgba->GetFrameFormat());
        if (Kernels::Contains(Read(strokes), Kernels::ON_SUBJECT) &&
            Kernels::Contains(Read(strokes), Kernels::ON_BACKGROUND)) {
            DataHandle cut = AsVideo(small).MakeCopy(CopyMode::Share);
            segmentation->ProcessData(cut, strokes);
            FrameFormat const size = small->GetFrameFormat();
            double const radius = settings.GetDetail() / 100 * std::max(size.width, size.height);
            Kernels::MakeMatte(Read(small), Read(cut), Kernels::ON_SUBJECT,
                               static_cast<std::size_t>(std::lround(radius)), Read(rgba), mask->GetMutablePlane(0));
        } else {
            VLOG(VERBOSE_LEVEL) << GetInstanceName() << " finds no subject that stands out from a background";
            warning = "no subject stands out from a background, all of the picture is kept; strokes would help";
            mask->Fill(Color::White(Color::Opacity::Opaque));
        }
        if (given) Kernels::BindStrokes(Read(given), mask->GetMutablePlane(0));
        KeepClear(Read(rgba), mask->GetMutablePlane(0));
        return mask;
    }

    DataHandle Shrink(DataHandle const& picture, std::uint32_t side) const {
        DataHandle small = AsVideo(picture).MakeCopy(CopyMode::Share);
        FrameFormat const frame = picture->GetFrameFormat();
        if (std::max(frame.width, frame.height) > side) {
            RunWith(*resizer,
                    SettingsResizer()
                        .SetMode(SettingsResizer::TO_FRAME)
                        .SetFitting(SettingsResizer::SHRINK_INSIDE)
                        .SetMethod(SettingsResizer::AREA)
                        .SetTarget(FrameFormat::Square(side, side)),
                    small);
        }
        toRgb->ProcessData(small);
        return small;
    }

    VideoHandle MakeStrokes(DataHandle const& small) const {
        VideoHandle const strokes = context->CreateImage(PixFmt::GRAY8, small->GetFrameFormat());
        strokes->Fill(Color::Black(Color::Opacity::Opaque));
        return strokes;
    }

    /// Strokes of the picture's size, in the kernels' values.
    VideoHandle TakeStrokes(DataHandle const& given) const {
        auto const subject = static_cast<Byte>(settings.GetForeground());
        auto const background = static_cast<Byte>(settings.GetBackground());
        if (subject == background)
            VELNOR_THROW(EffectException, "The settings foreground and background are both " + std::to_string(subject) +
                                              "; strokes of two values are needed.");
        DataHandle strokes = AsVideo(given).MakeCopy(CopyMode::Share);
        toGrey->ProcessData(strokes);
        if (!Kernels::Contains(Read(strokes), subject) || !Kernels::Contains(Read(strokes), background))
            VELNOR_THROW(EffectException, "The strokes picture needs strokes on the subject (value " +
                                              std::to_string(subject) + ") and on the background (value " +
                                              std::to_string(background) + ").");
        Kernels::TranslateStrokes(AsVideo(strokes).GetMutablePlane(0), subject, background);
        return VideoHandle(&AsVideo(strokes));
    }

    void FindStrokes(DataHandle const& small, MutablePlane const& strokes) {
        SettingsEffectNeuralBase const& network = settings.GetNeural();
        if (network.GetModel().empty()) return FindStrokesByColor(small, strokes);
        if (!predictor) predictor = MakeOneInput(SettingsEffectNeuralPredict());
        std::vector<float> const values = SubjectNetwork(predictor).Predict(small, network);
        if (values.empty())
            warning = "there is no network " + network.GetModel() + ", colours tell the subject; strokes would help";
        Kernels::SubjectMap const map{values, network.GetInputSize().width, network.GetInputSize().height};
        if (!map.HasSubject()) return FindStrokesByColor(small, strokes);
        settings.SetDoubt(map.GetDoubt());
        if (map.GetDoubt() >= map.DOUBTFUL) warning = "parts of the subject are in doubt; strokes would help";
        Kernels::PaintMarks(MarkSubject(map, strokes.GetWidth(), strokes.GetHeight()), strokes.GetWidth(), strokes);
    }

    void FindStrokesByColor(DataHandle const& small, MutablePlane const& strokes) {
        DataHandle const tiny = Shrink(small, LOOK_SIDE);
        std::uint32_t const width = tiny->GetFrameFormat().width;
        std::vector<FaceBox> const faces =
            FindFaces(small, static_cast<float>(width) / static_cast<float>(small->GetFrameFormat().width));
        Kernels::PaintMarks(Kernels::FindSubjectStrokes(Read(tiny), faces), width, strokes);
    }

    /// Those of the copy that is cut, in pixels of a copy that is `scale` times as large.
    std::vector<FaceBox> FindFaces(DataHandle const& small, float scale) {
        if (!faceDetector) faceDetector = MakeOneInput(SettingsEffectFaceDetector());
        std::vector<FaceBox> boxes;
        for (Face const& face : FaceFinder(faceDetector).Find(small, GetInstanceName()))
            boxes.push_back({static_cast<float>(face.left) * scale, static_cast<float>(face.top) * scale,
                             static_cast<float>(face.width) * scale, static_cast<float>(face.height) * scale});
        return boxes;
    }

    DataHandle CleanEdge(DataHandle const& rgba, VideoHandle const& mask) {
        // A part of this effect: the contract has no operation to ask the host's factory for one of its kind.
        if (!edgeRemove) edgeRemove = CreateEdgeRemove(factory, context);
        edgeRemove->SetSettings(
            SettingsEffectEdgeRemove().SetStrength(settings.GetDecontaminate()).SetFringe(2).SetFeather(0));
        return edgeRemove->ProcessData({rgba, mask});
    }

    DataHandle Compose(DataHandle const& subject, DataHandle const& given) const {
        FrameFormat const frame = subject->GetFrameFormat();
        VideoHandle result;
        if (given) {
            DataHandle scene = AsVideo(given).MakeCopy(CopyMode::Share);
            toRgb->ProcessData(scene);
            RunWith(
                *resizer,
                SettingsResizer().SetMode(SettingsResizer::TO_FRAME).SetFitting(SettingsResizer::FILL).SetTarget(frame),
                scene);
            result = AsVideo(scene).MakeCopy(CopyMode::Independent);
        } else {
            result = context->CreateImage(PixFmt::RGB24, frame);
            result->Fill(settings.GetColor());
        }
        LayOver(Read(subject), result->GetMutablePlane(0));
        result->CopyAttributes(*subject);
        return result;
    }

    intrusive_ptr<IOneInputEffectVideo> toRgba;
    intrusive_ptr<IOneInputEffectVideo> toRgb;
    intrusive_ptr<IOneInputEffectVideo> toGrey;
    intrusive_ptr<IOneInputEffectVideo> resizer;
    intrusive_ptr<ITwoInputEffectVideo> segmentation;
    intrusive_ptr<IOneInputEffectVideo> faceDetector; ///< Made when it is needed first.
    intrusive_ptr<IOneInputEffectVideo> predictor;    ///< The same.
    intrusive_ptr<IEffect> edgeRemove;                ///< The same.
    std::string warning;                              ///< About the last picture; empty for none.
};

VELNOR_EFFECT(SettingsEffectRemoveBackground, VarInput, RemoveBackground)

} // namespace Velnor::Proc
