#include "Tests/Proc/Host/PictureFileFixture.h"
#include "Tests/Support/Bombs.h"

namespace Velnor::Proc::Testing {
namespace {

TEST_F(PictureFileTest, WhatIsNoPictureIsNamedInOneLine) {
    folder.Write("empty.jpg", "");
    folder.Write("text.jpg", "This is no picture.\n");
    EXPECT_EQ(ReadError("empty.jpg"), In("empty.jpg").string() + " cannot be read: it is empty.");
    EXPECT_EQ(ReadError("missing.jpg"), In("missing.jpg").string() + " cannot be read: No such file or directory.");
    EXPECT_EQ(ReadError(""), In("").string() + " cannot be read: it is a folder.");
    EXPECT_THAT(ReadError("text.jpg"), HasSubstr("no picture file of a known kind"));
}

TEST_F(PictureFileTest, DamageIsAnErrorUnlessItIsAccepted) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 200, 150);
    ReadOptions accept;
    accept.acceptDamaged = true;
    for (std::string const name : {"a.jpg", "a.png", "a.tif", "a.webp"}) {
        Write(name, *picture);
        std::string const whole = folder.Read(name);
        folder.Write(name, whole.substr(0, whole.size() / 2));
        ::testing::internal::CaptureStderr();
        std::string const error = ReadError(name);
        bool const isReadable = name != "a.tif"; // The directory stands at its end.
        EXPECT_EQ(ReadError(name, accept).empty(), isReadable) << name;
        if (isReadable) {
            EXPECT_EQ(Read(name, accept).warnings,
                      std::vector<std::string>{"it is damaged: some of its rows are invented"})
                << name;
        }
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << name;
        EXPECT_TRUE(error.starts_with(In(name).string() + " cannot be read: ")) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    }
    Bytes const samples = Samples(*picture);
    Bytes const read = Samples(*Read("a.png", accept).picture);
    std::size_t const third = samples.size() / 3;
    EXPECT_TRUE(std::equal(samples.begin(), samples.begin() + static_cast<long>(third), read.begin()));
    EXPECT_EQ(read.back(), 0);

    Write("flipped.jpg", *picture);
    std::string bytes = folder.Read("flipped.jpg");
    bytes.replace(bytes.size() / 2, 40, 40, '\x55');
    bytes.replace(bytes.size() / 2 + 10, 2, "\xff\xd3");
    folder.Write("flipped.jpg", bytes);
    EXPECT_NE(ReadError("flipped.jpg"), "") << "what the decoder only warns of";
}

TEST_F(PictureFileTest, WhatIsLostOnTheWayIsSaid) {
    using Lines = std::vector<std::string>;
    Craft("deep.png", std::vector<std::uint16_t>(4, 9), 2, 1, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16,
          [](VipsImage*) {});
    EXPECT_EQ(Read("deep.png").warnings, Lines{"its samples of 16 bits become 8 bits"});
    Craft("ink.jpg", Bytes(64 * 4), 8, 4, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_CMYK, [](VipsImage*) {});
    EXPECT_EQ(Read("ink.jpg").warnings, Lines{"its colours, CMYK, become RGB"});
    Bytes film(3 * 8 * 8 * 3);
    for (std::size_t i = 0; i < film.size(); ++i) film[i] = static_cast<unsigned char>(i / (8 * 8 * 3) * 60);
    for (char const* name : {"film.gif", "film.webp", "film.tif"}) {
        Craft(name, film, 8, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB,
              [](VipsImage* image) { vips_image_set_int(image, VIPS_META_PAGE_HEIGHT, 8); });
        EXPECT_EQ(Read(name).warnings, Lines{"of its 3 pages or frames the first is read"}) << name;
    }
    // A long text before the samples, and then the number of frames.
    Write("long.png", *MakeNoise(*context, PixFmt::RGB24, 4, 3));
    std::string still = folder.Read("long.png");
    still.insert(33, MakePngChunk("tEXt", "Comment" + std::string(5000, '\0')));
    folder.Write("long.png", still);
    EXPECT_EQ(Read("long.png").warnings, Lines());
    folder.Write("film.png", still.insert(33, MakePngChunk("acTL", std::string("\0\0\0\7\0\0\0\0", 8))));
    EXPECT_EQ(Read("film.png").warnings, Lines{"of its 7 pages or frames the first is read"});
    VideoHandle const clear = MakeFlat(*context, PixFmt::RGBA, 16, 16, {200, 100, 50, 0});
    WriteOptions options;
    options.background = Color(0, 0, 250, 255);
    EXPECT_EQ(WritePicture(In("clear.jpg"), *clear, nullptr, options),
              Lines{"in JPEG, transparency is laid on the background colour"});
    Bytes const samples = Samples(*Read("clear.jpg").picture);
    EXPECT_NEAR(samples[0], 250, 3);
    EXPECT_NEAR(samples[2], 0, 3);
    EXPECT_EQ(WritePicture(In("opaque.jpg"), *MakeFlat(*context, PixFmt::RGBA, 16, 16, {1, 2, 3, 255}), nullptr),
              Lines());
}

TEST_F(PictureFileTest, SizeIsCheckedBeforePixelsAreDecoded) {
    using namespace std::string_literals;
    // 69 bytes that claim 60000 x 60000 pixels.
    folder.Write("huge.png", "\x89PNG\r\n\x1a\n"s
                             "\0\0\0\x0dIHDR\0\0\xea\x60\0\0\xea\x60\x08\x02\0\0\0\x0f\xb0\xe2\x15"s
                             "\0\0\0\x0cIDAT\x78\x9c\x63\x60\x60\x60\0\0\0\x04\0\x01\xf6\x17\x38\x55"s
                             "\0\0\0\0IEND\xae\x42\x60\x82"s);
    std::string const error = RefusalOf<FileLimitException>([&] { Read("huge.png"); });
    EXPECT_THAT(error, HasSubstr("60000 x 60000"));
    EXPECT_THAT(error, HasSubstr("512000000"));

    Write("a.png", *MakeNoise(*context, PixFmt::GRAY8, 20, 10));
    ReadOptions options;
    options.maxPixels = 199;
    EXPECT_NE(RefusalOf<FileLimitException>([&] { Read("a.png", options); }), "");
    options.maxPixels = 200;
    EXPECT_NO_THROW(Read("a.png", options));
}

TEST_F(PictureFileTest, WrongCallsSayWhatIsTaken) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::YUV444P, 8, 8);
    auto const error = [&](std::string const& name, IDataVideo const& video, int quality) {
        return RefusalOf<FileOutputException>([&] { WritePicture(In(name), video, nullptr, {.quality = quality}); });
    };
    EXPECT_THAT(error("a.bmp", *picture, 90), HasSubstr(".jpg, .jpeg, .jpe, .png, .tif, .tiff, .webp"));
    EXPECT_THAT(error("a", *picture, 90), HasSubstr("no extension"));
    EXPECT_THAT(error("a.jpg", *picture, 90), HasSubstr("not in yuv444p"));
    VideoHandle const grey = MakeNoise(*context, PixFmt::GRAY8, 8, 8);
    EXPECT_THAT(error("a.jpg", *grey, 0), HasSubstr("1 to 100, not 0"));
    EXPECT_NE(error("a.webp", *grey, 90), "");
    EXPECT_EQ(folder.CountFiles(), 0U);
    EXPECT_EQ(GetWritableFormats("x/A.JPG"), (std::vector<PixFmt>{PixFmt::RGB24, PixFmt::GRAY8}));
    EXPECT_EQ(GetWritableFormats("a.png").size(), 5U);
}

TEST_F(PictureFileTest, OutputMayBeTheInputOnlyWhenAsked) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 50, 40);
    Write("a.png", *picture);
    std::string const before = folder.Read("a.png");
    LoadedPicture const loaded = Read("a.png");
    EXPECT_NE(RefusalOf<FileOutputException>([&] { Write("a.png", *loaded.picture); }), "");
    EXPECT_EQ(folder.Read("a.png"), before);
    Write("a.png", *loaded.picture, nullptr, true);
    EXPECT_EQ(Samples(*Read("a.png").picture), Samples(*picture));
    EXPECT_EQ(folder.CountFiles(), 1U);
}

TEST_F(PictureFileTest, AnEncoderThatFailsLeavesTheOldFile) {
    folder.Write("a.webp", "old");
    VideoHandle const tooWide = MakeFlat(*context, PixFmt::RGB24, 20000, 1, {1, 2, 3}); // WebP ends at 16383
    std::string const error = RefusalOf<FileOutputException>([&] { Write("a.webp", *tooWide, nullptr, true); });
    EXPECT_TRUE(error.starts_with(In("a.webp").string() + " cannot be written: ")) << error;
    EXPECT_EQ(folder.Read("a.webp"), "old");
    EXPECT_EQ(folder.CountFiles(), 1U);
}

} // namespace
} // namespace Velnor::Proc::Testing
