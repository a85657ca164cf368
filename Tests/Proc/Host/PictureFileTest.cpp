#include "Tests/Proc/Host/PictureFileFixture.h"

#include <array>
#include <future>

namespace Velnor::Proc::Testing {
namespace {

TEST_F(PictureFileTest, LosslessFilesReadBackExactlyInTheFormatThatWasWritten) {
    for (char const* name : {"a.png", "a.tif"})
        for (PixFmt const format : {PixFmt::RGB24, PixFmt::RGBA, PixFmt::GRAY8, PixFmt::YA8})
            for (auto const& [width, height] : {std::pair{1U, 1U}, {37U, 21U}, {130U, 300U}}) {
                VideoHandle const picture = MakeNoise(*context, format, width, height);
                Write(name, *picture, nullptr, true);
                LoadedPicture const loaded = Read(name);
                EXPECT_EQ(loaded.picture->GetPixFmt(), format) << name;
                EXPECT_EQ(loaded.picture->GetFrameFormat(), FrameFormat::Square(width, height));
                EXPECT_EQ(Samples(*loaded.picture), Samples(*picture)) << name << " " << static_cast<int>(format);
            }
}

TEST_F(PictureFileTest, LossyFilesKeepColourAndAlpha) {
    for (char const* name : {"a.jpg", "a.JPEG", "a.webp"}) {
        Write(name, *MakeFlat(*context, PixFmt::RGB24, 32, 16, {200, 100, 50}));
        VideoHandle const picture = Read(name).picture;
        ASSERT_EQ(picture->GetPixFmt(), PixFmt::RGB24) << name;
        Bytes const samples = Samples(*picture);
        EXPECT_NEAR(samples[0], 200, 4) << name;
        EXPECT_NEAR(samples[1], 100, 4) << name;
        EXPECT_NEAR(samples[2], 50, 4) << name;
    }
    Write("grey.jpg", *MakeFlat(*context, PixFmt::GRAY8, 32, 16, {77}));
    EXPECT_EQ(Read("grey.jpg").picture->GetPixFmt(), PixFmt::GRAY8);
    Write("alpha.webp", *MakeFlat(*context, PixFmt::RGBA, 32, 16, {200, 100, 50, 9}));
    EXPECT_EQ(Samples(*Read("alpha.webp").picture)[3], 9);
    Write("flat.jpg", *MakeFlat(*context, PixFmt::RGBA, 32, 16, {200, 100, 50, 128}));
    EXPECT_NEAR(Samples(*Read("flat.jpg").picture)[0], 228, 4) << "over white";
}

TEST_F(PictureFileTest, ReadsRowsThatAreUpsideDownOrPadded) {
    Bytes memory{1, 2, 3, 99, 4, 5, 6, 99};
    VideoHandle picture;
    context->WrapImage(&picture, PixFmt::GRAY8, FrameFormat::Square(3, 2),
                       {ConstPlane(memory.data(), 4, 3, 2, 1, true)}, nullptr);
    Write("a.png", *picture);
    EXPECT_EQ(Samples(*Read("a.png").picture), (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST_F(PictureFileTest, SixteenBitsAreRounded) {
    std::vector<std::uint16_t> deep(65536);
    Bytes expected(deep.size());
    for (std::size_t i = 0; i < deep.size(); ++i) {
        deep[i] = static_cast<std::uint16_t>(i);
        expected[i] = static_cast<unsigned char>((i * 255 + 32767) / 65535);
    }
    for (char const* name : {"deep.png", "deep.tif"}) {
        Craft(name, deep, 256, 1, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16, [](VipsImage*) {});
        VideoHandle const picture = Read(name).picture;
        EXPECT_EQ(picture->GetPixFmt(), PixFmt::GRAY8);
        EXPECT_EQ(Samples(*picture), expected) << name;
    }
}

TEST_F(PictureFileTest, OtherColourModelsBecomeRgb) {
    Craft("linear.tif", std::vector<float>{0.0F, 0.2F, 1.0F}, 1, 3, VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_scRGB,
          [](VipsImage*) {});
    EXPECT_EQ(Samples(*Read("linear.tif").picture), (Bytes{0, 124, 255})) << "linear light gets the curve of sRGB";

    Craft("lab.tif", std::vector<float>{100, 0, 0}, 1, 3, VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_LAB,
          [](VipsImage*) {});
    EXPECT_EQ(Samples(*Read("lab.tif").picture), (Bytes{255, 255, 255}));

    Bytes ink;
    for (int i = 0; i < 64; ++i) ink.insert(ink.end(), {0, 0, 0, 0});
    Craft("cmyk.jpg", ink, 8, 4, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_CMYK, [](VipsImage*) {});
    LoadedPicture const paper = Read("cmyk.jpg");
    ASSERT_EQ(paper.picture->GetPixFmt(), PixFmt::RGB24);
    EXPECT_GT(Samples(*paper.picture)[0], 250) << "no ink is white";
    Write("rgb.png", *paper.picture, paper.metadata.get());
    InspectFile("rgb.png", [](VipsImage* image) {
        std::string const profile = GetBlob(image, VIPS_META_ICC_NAME);
        EXPECT_TRUE(profile.empty() || profile.substr(16, 4) == "RGB ") << profile.substr(16, 4);
    });
}

TEST_F(PictureFileTest, EveryOrientationArrivesUpright) {
    // A picture of 3 x 2 pixels as each orientation stores it.
    std::array<Bytes, 8> const stored{Bytes{1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1},
                                      {4, 5, 6, 1, 2, 3},      {1, 4, 2, 5, 3, 6}, {3, 6, 2, 5, 1, 4},
                                      {6, 3, 5, 2, 4, 1},      {4, 1, 5, 2, 6, 3}};
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (std::size_t const bands : {1U, 3U}) {
            auto const repeat = [bands](Bytes const& pixels) {
                Bytes samples;
                for (unsigned char const pixel : pixels) samples.insert(samples.end(), bands, pixel);
                return samples;
            };
            Craft("turned.tif", repeat(stored.at(static_cast<std::size_t>(orientation - 1))), orientation < 5 ? 3 : 2,
                  static_cast<int>(bands), VIPS_FORMAT_UCHAR,
                  bands == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB,
                  [orientation](VipsImage* image) { vips_image_set_int(image, VIPS_META_ORIENTATION, orientation); });
            LoadedPicture const loaded = Read("turned.tif");
            EXPECT_EQ(loaded.picture->GetFrameFormat(), FrameFormat::Square(3, 2)) << orientation;
            EXPECT_EQ(Samples(*loaded.picture), repeat({1, 2, 3, 4, 5, 6})) << orientation;
            Write("upright.tif", *loaded.picture, loaded.metadata.get(), true);
            EXPECT_EQ(Samples(*Read("upright.tif").picture), Samples(*loaded.picture)) << "turned once, not twice";
        }
}

TEST_F(PictureFileTest, PalettesAreExact) {
    for (unsigned const colors : {1U, 2U, 3U, 4U, 7U, 16U, 17U, 256U})
        for (bool const isOpaque : {true, false}) {
            VideoHandle const picture = MakeNoise(*context, PixFmt::PAL8, 37, 19, colors);
            MutablePlane const indexes = picture->GetMutablePlane(0);
            MutablePlane const palette = picture->GetMutablePlane(1);
            Bytes expected;
            for (int i = 0; isOpaque && i < 256; ++i) palette.GetRow(0)[i * 4 + 3] = 255;
            palette.GetRow(0)[3] = isOpaque ? 255 : 7;
            indexes.GetRow(18)[36] = 0;
            for (std::uint64_t y = 0; y < 19; ++y)
                for (std::uint64_t x = 0; x < 37; ++x) {
                    unsigned char& index = indexes.GetRow(y)[x];
                    index = static_cast<unsigned char>(index % colors);
                    unsigned char const* const entry = palette.GetRow(0) + 4 * index;
                    expected.insert(expected.end(), entry, entry + (isOpaque ? 3 : 4));
                }
            Write("a.png", *picture, nullptr, true);
            EXPECT_EQ(Samples(*Read("a.png").picture), expected) << colors;
            std::string const file = folder.Read("a.png");
            EXPECT_EQ(file[24], colors <= 2 ? 1 : colors <= 4 ? 2 : colors <= 16 ? 4 : 8) << "bits a pixel";
            EXPECT_EQ(file[25], 3) << "kind of PNG";
        }
}

TEST_F(PictureFileTest, AJpegFileIsEncodedAsTheOneThatWasRead) {
    struct Coding {
        int quality;
        VipsForeignSubsample subsampling;
        bool isHalved;
    };
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    auto const tablesOf = [&](std::string const& name) {
        std::string const bytes = folder.Read(name);
        return bytes.substr(bytes.find("\xff\xdb"), 69);
    };
    auto const isHalved = [&](std::string const& name) {
        std::string const bytes = folder.Read(name);
        return bytes.at(bytes.find("\xff\xc0") + 11) == 0x22;
    };
    for (Coding const& coding : {Coding{35, VIPS_FOREIGN_SUBSAMPLE_ON, true},
                                 {77, VIPS_FOREIGN_SUBSAMPLE_OFF, false},
                                 {98, VIPS_FOREIGN_SUBSAMPLE_ON, true}}) {
        Write("plain.png", *picture, nullptr, true);
        InspectFile("plain.png", [&](VipsImage* image) {
            ASSERT_EQ(vips_jpegsave(image, In("in.jpg").c_str(), "Q", coding.quality, "subsample_mode",
                                    coding.subsampling, nullptr),
                      0);
        });
        LoadedPicture const loaded = Read("in.jpg");
        Write("out.jpg", *loaded.picture, loaded.metadata.get(), true);
        EXPECT_EQ(tablesOf("out.jpg"), tablesOf("in.jpg")) << coding.quality;
        EXPECT_EQ(isHalved("out.jpg"), coding.isHalved) << coding.quality;
        WritePicture(In("out.jpg"), *loaded.picture, loaded.metadata.get(),
                     {.quality = 50, .overwrite = true, .halvesChroma = !coding.isHalved});
        EXPECT_NE(tablesOf("out.jpg"), tablesOf("in.jpg")) << coding.quality;
        EXPECT_NE(isHalved("out.jpg"), coding.isHalved) << coding.quality;
    }
}

TEST_F(PictureFileTest, OptionsDoWhatTheySayOrAreRefused) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    auto const write = [&](std::string const& name, WriteOptions options) {
        options.overwrite = true;
        return RefusalOf<FileOutputException>([&] { WritePicture(In(name), *picture, nullptr, options); });
    };
    for (char const* name : {"a.webp", "a.jxl"}) {
        EXPECT_EQ(write(name, {.isLossless = true}), "");
        EXPECT_EQ(Samples(*Read(name).picture), Samples(*picture)) << name;
    }
    for (char const* compression : {"none", "deflate"}) EXPECT_EQ(write("a.tif", {.compression = compression}), "");
    EXPECT_EQ(write("a.png", {.compression = "0"}), "");
    EXPECT_GT(folder.Read("a.png").size(), 64U * 64 * 3) << "not compressed";
    for (auto const& [name, options] :
         std::vector<std::pair<std::string, WriteOptions>>{{"b.png", {.quality = 50}},
                                                           {"b.tif", {.quality = 50}},
                                                           {"b.jpg", {.isLossless = true}},
                                                           {"b.webp", {.quality = 50, .isLossless = true}},
                                                           {"b.webp", {.halvesChroma = true}},
                                                           {"b.png", {.compression = "10"}},
                                                           {"b.tif", {.compression = "6"}},
                                                           {"b.jpg", {.compression = "6"}}})
        EXPECT_NE(write(name, options).find("cannot be written: "), std::string::npos) << name;
}

TEST_F(PictureFileTest, NamesAreTakenLiterally) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    Write("photo[Q=1].png", *picture);
    EXPECT_EQ(Samples(*Read("photo[Q=1].png").picture), Samples(*picture));
    EXPECT_EQ(folder.CountFiles(), 1U);
}

TEST_F(PictureFileTest, SeveralThreadsReadAndWriteAtOnce) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 300, 200);
    std::vector<std::future<bool>> results;
    for (int i = 0; i < 4; ++i)
        results.push_back(std::async(std::launch::async, [&, i] {
            std::string const name = std::to_string(i) + ".png";
            Write(name, *picture->MakeCopy(CopyMode::Value));
            return Samples(*Read(name).picture) == Samples(*picture);
        }));
    for (auto& result : results) EXPECT_TRUE(result.get());
}

} // namespace
} // namespace Velnor::Proc::Testing
