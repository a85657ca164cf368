// NeuralPredict: hands a small copy of the picture to a network and keeps what it answers. The picture itself stays.
//
// The network gets one blob of 1 x 3 x height x width: (level - mean) / scale, the channels in the order of the
// settings. Of several outputs the first counts. Without a smallest side the picture is stretched to the network's
// input size. With one of n cells its shape is kept: the shorter side becomes n sixteenths of the shorter side of
// the input size, the longer one at most four times that; only a network that takes any size can be run so.
#include "Proc/Effects/Kit/EffectBase.h"
#include "Proc/Effects/Photo/NetworkFile.h"
#include "Proc/Effects/Photo/OpenCV/CVThreads.h"
#include "Proc/Effects/Photo/PhotoModule.h"
#include "Proc/Host/MemoryRoom.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Proc/Settings/SettingsResizer.h"

#include <opencv2/core/utils/logger.hpp>
#include <opencv2/dnn.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace Velnor::Proc {
namespace {

constexpr std::uint32_t CELLS_A_SIDE = 16;
constexpr std::uint32_t LONGEST_TO_SHORTEST = 4;

/// The size at which the picture is handed over.
FrameFormat ChooseSize(FrameFormat const& picture, FrameFormat const& input, int cells) {
    if (cells == 0) return FrameFormat::Square(input.width, input.height);
    std::uint32_t const shorter =
        std::max(1U, std::min(input.width, input.height) * static_cast<std::uint32_t>(cells) / CELLS_A_SIDE);
    auto const [low, high] = std::minmax(picture.width, picture.height);
    double const ratio = std::min<double>(LONGEST_TO_SHORTEST, static_cast<double>(high) / low);
    auto const longer = static_cast<std::uint32_t>(std::lround(shorter * ratio));
    return picture.width < picture.height ? FrameFormat::Square(shorter, longer) : FrameFormat::Square(longer, shorter);
}

/// The smallest side that is asked for in cells must be a side that an input can have.
void RequireCells(SettingsEffectNeuralPredict const& settings) {
    FrameFormat const size = settings.GetNeural().GetInputSize();
    std::uint64_t const shorter = std::uint64_t{std::min(size.width, size.height)} *
                                  static_cast<std::uint64_t>(settings.GetFixMin()) / CELLS_A_SIDE;
    if (shorter > SettingsEffectNeuralBase::LARGEST_SIDE)
        VELNOR_THROW(EffectException,
                     "The setting fix-min is " + std::to_string(settings.GetFixMin()) + "; with an input size of " +
                         SizeText(size) + " that is a side of " + std::to_string(shorter) + " pixels, above the " +
                         std::to_string(SettingsEffectNeuralBase::LARGEST_SIDE) + " that are accepted.");
}

/// How levels of a component become the network's numbers.
struct Standard {
    double mean, scale;
};

/// For red, green and blue.
std::array<Standard, 3> GetStandards(SettingsEffectNeuralBase const& neural) {
    if (neural.GetNormalization() == SettingsEffectNeuralBase::IMAGENET)
        return {{{0.485 * 255, 0.229 * 255}, {0.456 * 255, 0.224 * 255}, {0.406 * 255, 0.225 * 255}}};
    Standard const uniform{neural.GetMean(), neural.GetScale()};
    return {uniform, uniform, uniform};
}

/// 1 x 3 x height x width floats of packed red, green and blue.
cv::Mat MakeBlob(ConstPlane const& rgb, SettingsEffectNeuralBase const& neural) {
    int const width = static_cast<int>(rgb.GetWidth() / 3);
    int const height = static_cast<int>(rgb.GetHeight());
    bool const isBgr = neural.GetChannelOrder() == SettingsEffectNeuralBase::BGR;
    cv::Mat blob(std::vector<int>{1, 3, height, width}, CV_32F);
    std::array<Standard, 3> const standards = GetStandards(neural);
    for (int channel = 0; channel < 3; ++channel) {
        int const component = isBgr ? 2 - channel : channel;
        Standard const standard = standards[static_cast<std::size_t>(component)];
        for (int y = 0; y < height; ++y) {
            unsigned char const* const from = rgb.GetRow(static_cast<std::uint64_t>(y)) + component;
            float* const to = blob.ptr<float>(0, channel, y);
            for (int x = 0; x < width; ++x) to[x] = static_cast<float>((from[x * 3] - standard.mean) / standard.scale);
        }
    }
    return blob;
}

std::string Describe(cv::Exception const& error) {
    std::string text = error.err.empty() ? error.what() : error.err;
    std::ranges::replace(text, '\n', ' ');
    return text;
}

} // namespace

class NeuralPredict : public EffectBaseOneInput<IOneInputEffectVideo, SettingsEffectNeuralPredict> {
public:
    NeuralPredict(FactoryHandle const& effectFactory, ContextHandle const& effectContext)
        : EffectBaseOneInput(effectFactory, effectContext, ImplNames::DEFAULT),
          resizer(MakeOneInput(SettingsResizer())),
          converter(MakeOneInput(SettingsColorspaceConverter(PixFmt::RGB24, false))) {}

    void ProcessInternal(DataHandle& data) override {
        settings.SetResult({});
        RequireCells(settings);
        LoadNetwork();
        DataHandle const input = Shrink(AsVideo(ConstDataHandle(data)));
        settings.SetResult(Predict(AsVideo(input).GetPlane(0)));
    }

private:
    void LoadNetwork() {
        std::string const model = settings.GetNeural().GetModel();
        if (!model.empty() && model == loadedModel) return;
        std::filesystem::path const file = FindNetwork(model);
        std::vector<unsigned char> const content = ReadNetwork(file);
        loadedModel.clear();
        try {
            network = cv::dnn::readNetFromONNX(reinterpret_cast<char const*>(content.data()), content.size());
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& error) {
            if (IsAboutMemory(error.what(), 0)) throw std::bad_alloc();
            auto const* const known = dynamic_cast<cv::Exception const*>(&error);
            VELNOR_THROW(EffectException, "The network " + file.string() + " is no ONNX file that OpenCV can load: " +
                                              (known != nullptr ? Describe(*known) : error.what()));
        }
        if (network.empty()) VELNOR_THROW(EffectException, "The network " + file.string() + " has no layers.");
        loadedModel = model;
    }

    DataHandle Shrink(IDataVideo const& picture) {
        FrameFormat const size =
            ChooseSize(picture.GetFrameFormat(), settings.GetNeural().GetInputSize(), settings.GetFixMin());
        resizer->SetSettings(
            SettingsResizer().SetMethod(SettingsResizer::AREA).SetMode(SettingsResizer::TO_FRAME).SetTarget(size));
        DataHandle copy = picture.MakeCopy(CopyMode::Share);
        resizer->ProcessData(copy);
        converter->ProcessData(copy);
        return copy;
    }

    std::vector<float> Predict(ConstPlane const& rgb) {
        SettingsEffectNeuralBase const neural = settings.GetNeural();
        try {
            network.setInput(MakeBlob(rgb, neural));
            cv::Mat scores;
            network.forward(network.getUnconnectedOutLayersNames().front()).convertTo(scores, CV_32F);
            return {scores.ptr<float>(), scores.ptr<float>() + scores.total()};
        } catch (cv::Exception const& error) {
            loadedModel.clear(); // Half set up for this size: the next picture gets a fresh one.
            if (IsAboutMemory(error.what(), 0)) throw std::bad_alloc();
            VELNOR_THROW(EffectException, "The network " + neural.GetModel() + " cannot be run on an input of " +
                                              SizeText(rgb.GetWidth() / 3, rgb.GetHeight()) +
                                              " pixels: " + Describe(error));
        }
    }

    intrusive_ptr<IOneInputEffectVideo> resizer;
    intrusive_ptr<IOneInputEffectVideo> converter;
    cv::dnn::Net network;
    std::string loadedModel; ///< What the network was read from; empty when there is none.
};

} // namespace Velnor::Proc

Velnor::Proc::EffectFactoryFunction FindVelnorEffect(char const* classId) {
    using namespace Velnor::Proc;
    ShareProcessorsWithOpenCV();
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT); // What it says is in its exceptions too.
    return classId == SettingsEffectNeuralPredict::CLASS_ID ? &MakeEffect<NeuralPredict> : nullptr;
}
