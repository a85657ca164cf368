#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Tests/Proc/Effects/Photo/PhotoEffectTest.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace Velnor::Proc {
namespace {

using namespace Testing;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::FloatNear;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using S = SettingsEffectNeuralPredict;

// A network of two layers as an ONNX file, from the field numbers of its protocol buffers.

std::string Field(int field, std::string const& content) {
    return std::string{static_cast<char>(field << 3 | 2), static_cast<char>(content.size())} + content;
}
std::string Number(int field, int value) { return {static_cast<char>(field << 3), static_cast<char>(value)}; }
std::string Node(std::string const& kind, std::string const& input, std::string const& output) {
    return Field(1, Field(1, input) + Field(2, output) + Field(3, output) + Field(4, kind));
}
std::string Tensor(int field, std::string const& name, std::string const& dimensions) {
    return Field(field, Field(1, name) + Field(2, Field(1, Number(1, 1) + Field(2, dimensions))));
}
/// First a layer of the given kind, then everything in one row.
std::string MakeNetwork(std::string const& kind) {
    std::string const one = Field(1, Number(1, 1));
    std::string const any = Field(1, Field(2, "n"));
    std::string const graph = Node(kind, "in", "mid") + Node("Flatten", "mid", "out") + Field(2, "g") +
                              Tensor(11, "in", one + Field(1, Number(1, 3)) + any + any) + Tensor(12, "out", one + any);
    std::string const length{static_cast<char>((graph.size() & 127) | 128), static_cast<char>(graph.size() >> 7)};
    return Number(1, 7) + std::string{7 << 3 | 2} + length + graph + Field(8, Number(2, 11));
}

class NeuralPredictTest : public PhotoEffectTest<S> {
protected:
    S Make(std::string const& model, std::uint32_t width, std::uint32_t height, double mean = 0,
           double scale = 1) const {
        SettingsEffectNeuralBase neural;
        neural.SetModel(model);
        neural.SetInputSize(FrameFormat::Square(width, height));
        neural.SetMean(mean);
        neural.SetScale(scale);
        return S(neural);
    }
    std::vector<float> Predict(S const& settings, VideoHandle const& picture) {
        Apply(settings, picture);
        return Result().GetResult();
    }

    std::string const means = WriteFile("means.onnx", MakeNetwork("GlobalAveragePool"));
    std::string const samples = WriteFile("samples.onnx", MakeNetwork("Relu"));
};

TEST_F(NeuralPredictTest, HandsOverScaledLevelsInTheOrderAskedForAndLeavesThePicture) {
    VideoHandle const picture = MakeFlat(context, PixFmt::BGRA, 30, 20, {10, 20, 30, 0});
    std::vector<unsigned char> const before = Samples(*picture);
    EXPECT_THAT(Predict(Make(means, 8, 8), picture), ElementsAre(30, 20, 10));
    EXPECT_THAT(Predict(Make(means, 8, 8, 10, 20), picture), ElementsAre(1, 0.5, 0));
    S bgr = Make(means, 8, 8);
    SettingsEffectNeuralBase neural = bgr.GetNeural();
    neural.SetChannelOrder(SettingsEffectNeuralBase::BGR);
    bgr.SetNeural(neural);
    EXPECT_THAT(Predict(bgr, picture), ElementsAre(10, 20, 30));
    EXPECT_EQ(Samples(*picture), before);
    EXPECT_EQ(picture->GetPixFmt(), PixFmt::BGRA);

    VideoHandle const grey = MakeFlat(context, PixFmt::GRAY8, 1, 1, {99});
    EXPECT_THAT(Predict(Make(means, 8, 8), grey), ElementsAre(99, 99, 99));
}

TEST_F(NeuralPredictTest, HandsOverEverySampleRowByRow) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 9, 5);
    for (bool const isBottomUp : {false, true}) {
        FencedPicture const fenced(*picture, isBottomUp);
        std::vector<float> const found = Predict(Make(samples, 9, 5), fenced.Wrap(context));
        ASSERT_THAT(found, SizeIs(3 * 9 * 5));
        for (std::size_t i = 0; i < found.size(); ++i) {
            std::size_t const y = i / 9 % 5;
            EXPECT_EQ(found[i], picture->GetPlane(0).GetRow(y)[i % 9 * 3 + i / 45]) << i;
        }
    }
}

TEST_F(NeuralPredictTest, ASmallestSideKeepsTheShapeInSixteenthsOfTheInput) {
    auto const count = [&](std::uint32_t width, std::uint32_t height, int cells) {
        S settings = Make(samples, 64, 32);
        settings.SetFixMin(cells);
        return Predict(settings, MakeNoise(context, PixFmt::YUV420P, width, height)).size() / 3;
    };
    EXPECT_EQ(count(90, 60, 0), 64U * 32);
    EXPECT_EQ(count(90, 60, 17), 51U * 34);
    EXPECT_EQ(count(60, 90, 8), 16U * 24);
    EXPECT_EQ(count(1000, 10, 8), 64U * 16); // four times as long at most
    EXPECT_EQ(count(1, 1, 1), 2U * 2);
}

TEST_F(NeuralPredictTest, SaysWhatIsWrongWithAModelAndTakesTheNext) {
    VideoHandle const picture = MakeNoise(context, PixFmt::RGB24, 20, 20);
    auto const refusal = [&](std::string const& model) { return Refusal(Make(model, 8, 8), picture); };
    std::string const absent = (folder.GetPath() / "absent.onnx").string();
    std::string const whole = MakeNetwork("Relu");
    EXPECT_THAT(Predict(Make(means, 8, 8), picture), SizeIs(3));
    EXPECT_THAT(refusal(absent), HasSubstr("There is no network " + absent));
    EXPECT_THAT(Result().GetResult(), SizeIs(0)) << "an answer of another network";
    EXPECT_THAT(refusal("absent.onnx"), AllOf(HasSubstr("networks/absent.onnx"), HasSubstr("horizon.onnx")));
    EXPECT_THAT(refusal(""), AllOf(HasSubstr("No network is set"), HasSubstr("horizon.onnx")));
    EXPECT_THAT(refusal(folder.GetPath().string()), HasSubstr("is not a file"));
    for (auto const& [name, content] : {std::pair<std::string, std::string>{"empty.onnx", ""},
                                        {"text.onnx", "no network at all"},
                                        {"cut.onnx", whole.substr(0, whole.size() / 2)},
                                        {"unknown-layer.onnx", MakeNetwork("NoSuchLayer")}}) {
        std::string const path = WriteFile(name, content);
        EXPECT_THAT(refusal(path), HasSubstr("The network " + path));
    }
    EXPECT_THAT(Predict(Make(means, 8, 8), picture), SizeIs(3));
}

TEST_F(NeuralPredictTest, RefusesCellsThatMakeTheInputTooLarge) {
    S huge = Make(means, 4096, 4096);
    huge.SetFixMin(33);
    EXPECT_EQ(Refusal(huge, MakeNoise(context, PixFmt::RGB24, 20, 20)),
              "The setting fix-min is 33; with an input size of 4096 x 4096 that is a side of 8448 pixels, above the "
              "8192 that are accepted.");
}

TEST_F(NeuralPredictTest, TheInstalledNetworkTellsHorizonsInTheSamples) {
    S settings = Make("horizon.onnx", 64, 64, 127.5, 127.5);
    settings.SetFixMin(17);
    for (auto const& [name, hasHorizon] : {std::pair<std::string, bool>{"rocket.jpg", true},
                                           {"astronaut.png", false},
                                           {"chelsea.png", false},
                                           {"coffee.png", false}}) {
        std::vector<float> const scores = Predict(settings, ReadSample(name));
        ASSERT_THAT(scores, SizeIs(2)) << name;
        EXPECT_THAT(scores[0] + scores[1], FloatNear(1, 1e-5F));
        EXPECT_EQ(scores[1] > scores[0], hasHorizon) << name;
    }
    // A bright sky over dark land, level and tilted; and the same on its side.
    auto const land = [&](double tilt, bool isUpright) {
        return Paint(context, PixFmt::RGB24, 150, 100, [=](std::uint32_t x, std::uint32_t y) {
            double const depth = isUpright ? y - 55.0 - tilt * (x - 75.0) : x - 75.0;
            double const grain = 20.0 * ((x * 7919 + y * 104729) % 97) / 97;
            return depth < 0 ? Colour4{140 - depth, 170 - depth * 0.6, 230} : Colour4{60 + grain, 80 + grain, 40};
        });
    };
    auto const sees = [&](VideoHandle const& picture) {
        std::vector<float> const scores = Predict(settings, picture);
        return scores[1] > scores[0];
    };
    EXPECT_TRUE(sees(land(0, true)));
    EXPECT_TRUE(sees(land(0.12, true)));
    EXPECT_FALSE(sees(land(0, false)));
}

} // namespace
} // namespace Velnor::Proc
