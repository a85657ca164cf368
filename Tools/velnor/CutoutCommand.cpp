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
#include <set>
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

std::vector<std::filesystem::path> NameFiles(std::vector<std::string> const& photos, std::string const& given) {
    OutputNaming const naming(given, photos.size());
    std::vector<std::filesystem::path> files;
    for (std::string const& photo : photos) files.push_back(naming.Plan({PhotoName{photo}}, files.size() + 1).output);
    return files;
}

/// The file that goes with each photograph: by a pattern or in a folder one for each, else the one file for all.
std::vector<std::filesystem::path> MatchFiles(std::vector<std::string> const& photos, std::string const& given) {
    bool const isOne = given.find('{') == std::string::npos && !std::filesystem::is_directory(given);
    if (isOne) return {photos.size(), given};
    return NameFiles(photos, given);
}

/// The outputs, one for each photograph, free to write.
std::vector<std::filesystem::path> PlanWritable(CutoutOptions const& options, std::string const& given) {
    if (given.empty()) return {};
    std::vector<std::filesystem::path> const files = NameFiles(options.photos, given);
    std::set<std::filesystem::path> const different(files.begin(), files.end());
    if (different.size() < files.size())
        throw WrongCall("cutout: " + given +
                        " gives two photographs one name; a pattern with {index} tells them apart");
    for (std::filesystem::path const& file : files) RequireOptions(file, options.files.ForWriting());
    CheckOutputs(files, options.files.writing.overwrite);
    return files;
}

void RequireCall(CutoutOptions const& options) {
    if (options.photos.empty()) throw WrongCall("cutout: no photograph is given");
    if (options.strokes.empty()) throw WrongCall("cutout: --strokes is missing; it names the picture with the strokes");
    if (options.output.empty() && options.mask.empty())
        throw WrongCall("cutout: -o is missing; it names the file to write");
}

/// Done; SomeFailed when at least one was done; else the code of the first failure.
ExitCode Summarise(std::vector<PhotoReport> const& photos) {
    ExitCode first = ExitCode::Done;
    bool isAnyDone = false;
    for (PhotoReport const& photo : photos) {
        if (photo.report.code == ExitCode::Stopped) return ExitCode::Stopped;
        if (first == ExitCode::Done) first = photo.report.code;
        isAnyDone = isAnyDone || photo.report.code == ExitCode::Done;
    }
    return isAnyDone && first != ExitCode::Done ? ExitCode::SomeFailed : first;
}

/// The cut-outs of a call, one after the other.
class Cutouts {
public:
    Cutouts(CutoutOptions const& given, intrusive_ptr<Core::IProgressController> const& progress)
        : options(given),
          settings(ParseSettings(given.settings)),
          strokes(MatchFiles(given.photos, given.strokes)),
          controller(progress),
          outputs(PlanWritable(given, given.output)),
          masks(PlanWritable(given, given.mask)),
          catalogue(given.plugins),
          cutout(catalogue, progress) {
        for (std::filesystem::path const& file : outputs) RequireRoomForAlpha(file.string());
    }

    /// Never throws for what is wrong with the photograph.
    PhotoReport Process(std::size_t index) {
        PhotoReport report;
        report.inputs = {options.photos[index]};
        try {
            ProcessThrowing(index, report);
        } catch (...) {
            report.report = ReportCurrentException();
            if (controller->IsStopRequested()) report.report = {ExitCode::Stopped, "stopped"};
        }
        return report;
    }

private:
    void ProcessThrowing(std::size_t index, PhotoReport& report) {
        std::string const& photo = options.photos[index];
        Proc::LoadedPicture const loaded =
            Proc::ReadPicture(photo, *catalogue.GetHost().GetContext(), options.files.ForReading());
        report.Warn(photo, loaded.warnings);
        DataHandle picture = loaded.picture;
        DataHandle mask = MakeMask(index, picture, report);
        DataHandle const written = Proc::AsVideo(mask).MakeCopy(Proc::CopyMode::Value);
        if (!outputs.empty()) {
            cutout.SetAlpha(picture, mask);
            Save(picture, outputs[index], true, loaded.metadata.get(), report);
        }
        if (!masks.empty()) Save(written, masks[index], false, nullptr, report);
    }

    DataHandle MakeMask(std::size_t index, DataHandle const& picture, PhotoReport& report) {
        std::string const file = strokes[index].string();
        DataHandle marks =
            Proc::ReadPicture(file, *catalogue.GetHost().GetContext(), options.files.ForReading()).picture;
        cutout.ReadStrokes(marks);
        Proc::FrameFormat const& size = picture->GetFrameFormat();
        Proc::FrameFormat const& marksSize = marks->GetFrameFormat();
        if (marksSize.width != size.width || marksSize.height != size.height)
            throw Failure(ExitCode::OutputFailed, file + " is " + SizeText(marksSize) + " pixels, " +
                                                      options.photos[index] + " " + SizeText(size) +
                                                      " pixels: they must be of one size");
        if (RoundToMarks(marks, settings))
            report.Warn(file, {"most of what is painted is neither " + std::to_string(settings.GetForeground()) +
                               " (object) nor " + std::to_string(settings.GetBackground()) +
                               " (background) and marks nothing"});
        DataHandle mask = picture;
        std::string const warning = cutout.MakeMask(mask, marks, settings);
        if (!warning.empty()) throw Failure(ExitCode::InputFailed, file + ": " + warning);
        cutout.Feather(mask, options.feather);
        return mask;
    }

    void Save(DataHandle picture, std::filesystem::path const& file, bool hasAlpha,
              Proc::PictureMetadata const* metadata, PhotoReport& report) const {
        report.Warn(report.inputs.front(), SavePicture(std::move(picture), file, hasAlpha, metadata,
                                                       options.files.ForWriting(), *catalogue.GetHost().GetFactory()));
        report.outputs.push_back(file);
    }

    CutoutOptions const& options;
    Proc::SettingsEffectGrabCut const settings;
    std::vector<std::filesystem::path> const strokes;
    intrusive_ptr<Core::IProgressController> const controller;
    std::vector<std::filesystem::path> const outputs; ///< Empty, or one for each photograph.
    std::vector<std::filesystem::path> const masks;
    EffectCatalogue const catalogue;
    Cutout cutout;
};

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
    auto const controller = Core::ProgressController::Create();
    StopSignals const signals(controller);
    Cutouts cutouts(options, controller);
    std::vector<PhotoReport> reports;
    for (std::size_t i = 0; i < options.photos.size(); ++i) {
        reports.push_back(cutouts.Process(i));
        PhotoReport const& photo = reports.back();
        if (!photo.report.text.empty()) PrintError(photo.report.text);
        for (std::string const& warning : photo.warnings) PrintError(warning);
        if (options.asJson) Print(FormatJson(photo));
        if (photo.report.code == ExitCode::Stopped) break;
    }
    return Summarise(reports);
}

} // namespace Velnor::Tool
