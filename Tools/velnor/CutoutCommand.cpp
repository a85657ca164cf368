#include "Tools/velnor/CutoutCommand.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Tools/velnor/Console.h"
#include "Tools/velnor/EffectCatalogue.h"
#include "Tools/velnor/EffectParameters.h"
#include "Tools/velnor/Failure.h"
#include "Tools/velnor/OutputNames.h"
#include "Tools/velnor/PhotoReport.h"
#include "Tools/velnor/PictureOutput.h"
#include "Tools/velnor/StopSignals.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace Velnor::Tool {
namespace {

using Proc::DataHandle;

/// Specks and frayed edges of a bare cut are smaller than this smoothing.
constexpr char const* DEFAULT_SMOOTHING = "2";

Proc::SettingsEffectGrabCut ParseSettings(std::vector<CutoutOptions::Setting> const& given) {
    Proc::SettingsEffectGrabCut settings;
    auto const fields = Proc::SettingsEffectGrabCut::StaticType().describe();
    for (CutoutOptions::Setting const& one : given) SetParameter(settings, "cutout", fields, {one.name, one.value});
    if (settings.GetForeground() == settings.GetBackground())
        throw WrongCall("cutout: --foreground and --background are both " + std::to_string(settings.GetForeground()) +
                        "; strokes on the object and on its background need different values");
    return settings;
}

void RequireRoomForAlpha(std::string const& output) {
    std::vector<PixFmt> const formats = Proc::GetWritableFormats(output);
    if (std::ranges::none_of(formats, HasAlpha))
        throw WrongCall("cutout: -o " + output + ": this format has no transparency; PNG, WebP and TIFF have");
}

/// Calls `work` with each sample of a grey picture and that of another at the same place.
template <class Work>
void ForEachSample(DataHandle const& grey, DataHandle const& other, Work const& work) {
    Proc::MutablePlane const samples = Proc::AsVideo(grey).GetMutablePlane(0);
    Proc::ConstPlane const others = Proc::AsVideo(other).GetPlane(0);
    for (std::uint64_t y = 0; y < samples.GetHeight(); ++y)
        for (std::uint64_t x = 0; x < samples.GetWidth(); ++x) work(samples.GetRow(y)[x], others.GetRow(y)[x]);
}

/// Takes what is all but the value of a mark for that mark: a brush with soft ends hardly reaches it, and lossy files
/// miss it by a little. Not more, or the edge of a soft white stroke, which goes through all greys, would be a line of
/// grey. Returns whether most of what is painted is no mark even so.
bool RoundToMarks(DataHandle const& strokes, Proc::SettingsEffectGrabCut const& settings) {
    constexpr int TOLERANCE = 4;
    std::uint64_t painted = 0;
    std::uint64_t marks = 0;
    ForEachSample(strokes, strokes, [&](std::uint8_t& sample, std::uint8_t) {
        int const value = sample;
        int const toObject = std::abs(value - settings.GetForeground());
        int const toGround = std::abs(value - settings.GetBackground());
        if (value == 0 && toObject != 0 && toGround != 0) return;
        ++painted;
        if (std::min(toObject, toGround) > TOLERANCE) return;
        ++marks;
        sample = static_cast<std::uint8_t>(toObject < toGround ? settings.GetForeground() : settings.GetBackground());
    });
    return 2 * marks < painted;
}

/// The steps from photograph and strokes to the picture that is written.
class Cutout {
public:
    Cutout(EffectCatalogue const& effects, intrusive_ptr<Core::IProgressController> const& progress)
        : factory(*effects.GetHost().GetFactory()), controller(progress) {}

    /// Makes strokes grey; what is more clear than opaque is none.
    void ReadStrokes(DataHandle& strokes) {
        DataHandle const opacity = ExtractAlpha(strokes);
        Convert(strokes, {PixFmt::GRAY8});
        if (opacity)
            ForEachSample(strokes, opacity,
                          [](std::uint8_t& stroke, std::uint8_t a) { stroke = a < 128 ? 0 : stroke; });
    }

    /// Puts the mask into the picture's handle. Returns what is wrong with the strokes, empty for nothing.
    std::string MakeMask(DataHandle& picture, DataHandle const& strokes, Proc::SettingsEffectGrabCut const& settings) {
        auto const effect = factory.CreateTwoInputEffect(settings.CLASS_ID, Proc::ImplNames::DEFAULT);
        effect->SetProgressController(controller);
        effect->SetSettings(settings);
        effect->ProcessData(picture, strokes);
        if (controller->IsStopRequested()) throw Failure(ExitCode::Stopped, "stopped");
        Core::Property const statistic = effect->GetStatistic();
        Core::Property const* const warning = statistic.FindChild(Proc::WARNING_NODE);
        return warning != nullptr ? warning->GetValue() : std::string();
    }

    void Feather(DataHandle& mask, double pixels) {
        if (pixels <= 0) return;
        Proc::SettingsEffectBlur soft(Proc::SettingsEffectBlur::GAUSSIAN);
        soft.SetDevX(pixels);
        soft.SetDevY(pixels);
        RunOn(mask, soft);
    }

    /// What was clear before stays so, in the same measure.
    void SetAlpha(DataHandle& picture, DataHandle const& mask) {
        if (DataHandle const own = ExtractAlpha(picture))
            ForEachSample(mask, own, [](std::uint8_t& sample, std::uint8_t a) {
                sample = static_cast<std::uint8_t>((sample * a + 127) / 255);
            });
        Convert(picture, {PixFmt::RGBA, PixFmt::YA8});
        auto const inserter =
            factory.CreateTwoInputEffect(Proc::SettingsEffectAlphaInserter::CLASS_ID, Proc::ImplNames::DEFAULT);
        inserter->SetSettings(Proc::SettingsEffectAlphaInserter());
        inserter->ProcessData(picture, mask);
    }

    void Convert(DataHandle& picture, std::vector<PixFmt> const& formats) {
        RunOn(picture, Proc::SettingsColorspaceConverter(formats, true));
    }

private:
    /// Null for a picture without.
    DataHandle ExtractAlpha(DataHandle picture) {
        RunOn(picture, Proc::SettingsEffectAlphaExtractor());
        return picture;
    }

    template <class SettingsClass>
    void RunOn(DataHandle& picture, SettingsClass const& settings) {
        auto const effect = factory.CreateOneInputEffect(SettingsClass::CLASS_ID, Proc::ImplNames::DEFAULT);
        effect->SetSettings(settings);
        effect->ProcessData(picture);
    }

    Proc::IEffectFactory& factory;
    intrusive_ptr<Core::IProgressController> const controller;
};

void RequireCall(CutoutOptions const& options) {
    if (options.photo.empty()) throw WrongCall("cutout: no photograph is given");
    if (options.strokes.empty()) throw WrongCall("cutout: --strokes is missing; it names the picture with the strokes");
    if (options.output.empty()) throw WrongCall("cutout: -o is missing; it names the file to write");
    RequireOptions(options.output, options.files.ForWriting());
    CheckOutputs({options.output}, options.files.writing.overwrite);
    RequireRoomForAlpha(options.output);
}

} // namespace

CutoutOptions::CutoutOptions() {
    Proc::SettingsEffectGrabCut const defaults;
    for (Proc::SettingsField const& field : defaults.GetType().describe())
        for (char const* const name : {"foreground", "background", "algorithm", "smooth"})
            if (field.name == name)
                settings.push_back({name, field.name == "smooth" ? DEFAULT_SMOOTHING : field.defaultText});
}

std::string DescribeCutoutSetting(std::string const& name) {
    auto const fields = Proc::SettingsEffectGrabCut::StaticType().describe();
    auto const field = std::ranges::find(fields, name, &Proc::SettingsField::name);
    std::string help = field->help;
    help.front() = static_cast<char>(std::toupper(help.front()));
    if (field->range) help += ", " + GetRangeText(*field);
    for (std::size_t i = 0; i < field->choices.size(); ++i) help += (i == 0 ? ": " : " or ") + field->choices[i];
    return help;
}

ExitCode RunCutout(CutoutOptions const& options) {
    RequireCall(options);
    Proc::SettingsEffectGrabCut const settings = ParseSettings(options.settings);
    auto const controller = Core::ProgressController::Create();
    StopSignals const signals(controller);
    EffectCatalogue const catalogue(options.plugins);
    Proc::IEffectContext& context = *catalogue.GetHost().GetContext();
    Cutout cutout(catalogue, controller);

    Proc::LoadedPicture const photo = Proc::ReadPicture(options.photo, context, options.files.ForReading());
    DataHandle picture = photo.picture;
    DataHandle strokes = Proc::ReadPicture(options.strokes, context, options.files.ForReading()).picture;
    cutout.ReadStrokes(strokes);
    Proc::FrameFormat const& size = picture->GetFrameFormat();
    Proc::FrameFormat const& strokesSize = strokes->GetFrameFormat();
    if (!IsSameSize(strokesSize, size))
        throw Failure(ExitCode::OutputFailed, options.strokes + " is " + SizeText(strokesSize) + " pixels, " +
                                                  options.photo + " " + SizeText(size) +
                                                  " pixels: they must be of one size");
    if (RoundToMarks(strokes, settings))
        PrintError(options.strokes + ": most of what is painted is neither " +
                   std::to_string(settings.GetForeground()) + " (object) nor " +
                   std::to_string(settings.GetBackground()) + " (background) and marks nothing");
    DataHandle mask = picture;
    std::string const warning = cutout.MakeMask(mask, strokes, settings);
    if (!warning.empty()) throw Failure(ExitCode::InputFailed, options.strokes + ": " + warning);
    cutout.Feather(mask, options.feather);
    cutout.SetAlpha(picture, mask);
    PhotoReport report;
    report.Warn(options.photo, photo.warnings);
    report.Warn(options.photo, SavePicture(std::move(picture), options.output, true, photo.metadata.get(),
                                           options.files.ForWriting(), *catalogue.GetHost().GetFactory()));
    for (std::string const& line : report.warnings) PrintError(line);
    return ExitCode::Done;
}

} // namespace Velnor::Tool
