#pragma once

#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"

#include <vector>

namespace Velnor::Proc {

/// Base of effects that compute in a few pixel formats only: each picture is converted to one of them, processed by
/// ProcessInternalCSC and converted back. The converters are configured when a format changes, never per picture.
template <class Interface, class SettingsClass>
class EffectBaseCSC : public EffectBaseOneInput<Interface, SettingsClass> {
public:
    EffectBaseCSC(FactoryHandle const& effectFactory, ContextHandle const& effectContext,
                  std::string const& implementation = ImplNames::VELNOR)
        : EffectBaseOneInput<Interface, SettingsClass>(effectFactory, effectContext, implementation),
          outputConverter(this->MakeOneInput(SettingsColorspaceConverter())) {}

    /// The effect's work on a picture in one of the supported formats.
    virtual void ProcessInternalCSC(DataHandle& data) = 0;

    /// Whether the result goes back to the format that the picture came in.
    virtual bool ConvertBack() const = 0;

    /// The formats that the effect takes, best first. Empty: every format, and nothing is converted on the way in.
    virtual std::vector<PixFmt> const& GetSupportedFormats() const {
        static std::vector<PixFmt> const formats{PixFmt::RGB24};
        return formats;
    }

    void SubEffectHook() override {
        if (convertInput && inputConverter) inputConverter->Flush();
        if (ConvertBack()) outputConverter->Flush();
    }

    void ProcessInternal(DataHandle& data) override {
        ConfigureInput(data->GetPixFmt());
        if (convertInput && inputConverter) inputConverter->ProcessData(data);
        ProcessInternalCSC(data);
        if (data->GetPixFmt() == lastInputFormat || !ConvertBack()) return;
        ConfigureOutput(data->GetPixFmt());
        outputConverter->ProcessData(data);
    }

private:
    // Formats are committed after the converters: one that throws leaves nothing that the next picture would trust.
    void ConfigureInput(PixFmt format) {
        if (format == lastInputFormat) return;
        lastOutputFormat = PixFmt::NONE;
        lastInputFormat = PixFmt::NONE;
        std::vector<PixFmt> const& formats = GetSupportedFormats();
        convertInput = !formats.empty();
        if (convertInput) {
            SettingsColorspaceConverter const toSupported(formats, true);
            if (inputConverter)
                inputConverter->SetSettings(toSupported);
            else
                inputConverter = this->MakeOneInput(toSupported);
        }
        lastInputFormat = format;
    }

    void ConfigureOutput(PixFmt workingFormat) {
        if (workingFormat == lastOutputFormat) return;
        lastOutputFormat = PixFmt::NONE;
        outputConverter->SetSettings(SettingsColorspaceConverter(lastInputFormat, true));
        lastOutputFormat = workingFormat;
    }

    bool convertInput = true;
    intrusive_ptr<IOneInputEffectVideo> inputConverter;
    intrusive_ptr<IOneInputEffectVideo> outputConverter;
    PixFmt lastInputFormat = PixFmt::NONE;  ///< Format that the input converter is configured for.
    PixFmt lastOutputFormat = PixFmt::NONE; ///< Working format that the last result came in.
};

/// Base of colour effects that must not change brightness: the luma of the picture as it was handed to
/// ProcessInternalCSC replaces the luma of the result, so that the net change is one of chroma.
template <class Interface, class SettingsClass>
class EffectBaseCSCLuma : public EffectBaseCSC<Interface, SettingsClass> {
public:
    EffectBaseCSCLuma(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseCSC<Interface, SettingsClass>(effectFactory, effectContext),
          greyConverter(this->MakeOneInput(SettingsColorspaceConverter(PixFmt::GRAY8, true))),
          lumaConverter(this->MakeOneInput(
              SettingsColorspaceConverter(std::vector<PixFmt>{PixFmt::YUV444P, PixFmt::YUVA444P}, true))) {}

    void ProcessInternalCSC(DataHandle& data) override {
        DataHandle unprocessed = data;
        data = AsVideo(data).MakeCopy(CopyMode::Independent);
        if (!HasLumaPlane(AsVideo(data).GetDescription())) greyConverter->ProcessData(unprocessed);
        ProcessInternalColor(data);
        lumaConverter->ProcessData(data);
        CopyPlane(AsVideo(unprocessed).GetPlane(0), AsVideo(data).GetMutablePlane(0));
    }

    /// The effect's own change of colour, in place or by replacing the handle.
    virtual void ProcessInternalColor(DataHandle& data) = 0;

private:
    /// Whether plane 0 is what a conversion to luma and chroma would make of it.
    static bool HasLumaPlane(PixFmtDescription const& format) {
        bool const isLuma = format.model == ColorModel::Grey || format.model == ColorModel::Luma;
        return isLuma && format.planes[0].bytes == 1;
    }

    /// Grey is the luma of any conversion, without the cost of its chroma.
    intrusive_ptr<IOneInputEffectVideo> greyConverter;
    intrusive_ptr<IOneInputEffectVideo> lumaConverter;
};

} // namespace Velnor::Proc
