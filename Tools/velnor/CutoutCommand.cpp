#include "Tools/velnor/CutoutCommand.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
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

namespace Velnor::Tool {
namespace {

using Proc::DataHandle;

/// Specks and frayed edges of a bare cut are smaller than this smoothing.
constexpr char const* DEFAULT_SMOOTHING = "2";

std::string Describe(Proc::FrameFormat const& frame) {
    return std::to_string(frame.width) + " x " + std::to_string(frame.height) + " pixels";
}

Proc::SettingsEffectGrabCut ParseSettings(std::vector<CutoutOptions::Setting> const& given) {
    Proc::SettingsEffectGrabCut settings;
    auto const fields = Proc::SettingsEffectGrabCut::StaticType().describe();
    for (CutoutOptions::Setting const& one : given) SetParameter(settings, "cutout", fields, {one.name, one.value});
    return settings;
}

void RequireRoomForAlpha(std::string const& output) {
    std::vector<PixFmt> const formats = Proc::GetWritableFormats(output);
    if (std::ranges::none_of(formats, HasAlpha))
        throw WrongCall("cutout: -o " + output + ": this format has no transparency; PNG, WebP and TIFF have");
}

/// The steps from photograph and strokes to the picture that is written.
class Cutout {
public:
    Cutout(EffectCatalogue const& effects, intrusive_ptr<Core::IProgressController> const& progress)
        : factory(*effects.GetHost().GetFactory()), controller(progress) {}

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

    void SetAlpha(DataHandle& picture, DataHandle const& mask) {
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
    cutout.Convert(strokes, {PixFmt::GRAY8});
    Proc::FrameFormat const& size = picture->GetFrameFormat();
    Proc::FrameFormat const& strokesSize = strokes->GetFrameFormat();
    if (strokesSize.width != size.width || strokesSize.height != size.height)
        throw Failure(ExitCode::InputFailed, options.strokes + " is " + Describe(strokesSize) + ", " + options.photo +
                                                 " " + Describe(size) + ": they must be of one size");
    DataHandle mask = picture;
    std::string const warning = cutout.MakeMask(mask, strokes, settings);
    if (!warning.empty()) throw Failure(ExitCode::InputFailed, options.strokes + ": " + warning);
    cutout.Feather(mask, options.feather);
    cutout.SetAlpha(picture, mask);
    PhotoReport report{options.photo, {}, {}, {}, {}};
    report.Warn(photo.warnings);
    report.Warn(SavePicture(std::move(picture), options.output, true, photo.metadata.get(), options.files.ForWriting(),
                            *catalogue.GetHost().GetFactory()));
    for (std::string const& line : report.warnings) PrintError(line);
    return ExitCode::Done;
}

} // namespace Velnor::Tool
