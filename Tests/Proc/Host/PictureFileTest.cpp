#include "Proc/Host/PictureFile.h"

#include "Tests/Support/Bombs.h"
#include "Tests/Support/ColorProfiles.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <vips/vips.h>

#include <array>
#include <cstring>
#include <fstream>
#include <future>
#include <iterator>

namespace Velnor::Proc::Testing {
namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<unsigned char>;

std::string ReadBytes(fs::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(fs::path const& path, std::string const& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

/// The description of the Error that an action throws; empty when it throws none.
template <class Error, class Action>
std::string DescriptionOf(Action const& action) {
    try {
        action();
        return {};
    } catch (Error const& error) {
        return DescribeException(error);
    }
}

class PictureFileTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(VIPS_INIT("test"), 0); }

    fs::path In(std::string const& name) const { return folder.GetPath() / name; }
    LoadedPicture Read(std::string const& name, ReadOptions const& options = {}) {
        return ReadPicture(In(name), *context, options);
    }
    void Write(std::string const& name, IDataVideo const& picture, PictureMetadata const* metadata = nullptr,
               bool overwrite = false) {
        WriteOptions options;
        options.overwrite = overwrite;
        WritePicture(In(name), picture, metadata, options);
    }
    std::string ReadError(std::string const& name, ReadOptions const& options = {}) {
        return DescriptionOf<FileInputException>([&] { Read(name, options); });
    }
    std::size_t CountFiles() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.GetPath()), {}));
    }

    /// Saves samples with the file library itself, and with fields that `decorate` sets.
    template <class Sample, class Decorate>
    void Craft(std::string const& name, std::vector<Sample> samples, int width, int bands, VipsBandFormat format,
               VipsInterpretation interpretation, Decorate const& decorate) {
        int const height = static_cast<int>(samples.size()) / width / bands;
        VipsImage* const memory = vips_image_new_from_memory_copy(samples.data(), samples.size() * sizeof(Sample),
                                                                  width, height, bands, format);
        VipsImage* image = nullptr;
        ASSERT_EQ(vips_copy(memory, &image, "interpretation", interpretation, nullptr), 0);
        decorate(image);
        ASSERT_EQ(vips_image_write_to_file(image, In(name).c_str(), nullptr), 0) << vips_error_buffer();
        g_object_unref(image);
        g_object_unref(memory);
    }

    /// What the file library finds in a file.
    template <class Inspect>
    void InspectFile(std::string const& name, Inspect const& inspect) {
        VipsImage* const image = vips_image_new_from_file(In(name).c_str(), nullptr);
        ASSERT_NE(image, nullptr) << name;
        inspect(image);
        g_object_unref(image);
    }

    TemporaryFolder const folder;
    ContextHandle const context = MakeShared<Context>();
};

std::string GetBlob(VipsImage* image, char const* name) {
    void const* data = nullptr;
    std::size_t bytes = 0;
    if (vips_image_get_typeof(image, name) == 0 || vips_image_get_blob(image, name, &data, &bytes) != 0) return {};
    return {static_cast<char const*>(data), bytes};
}

/// One of the file library's own profiles.
std::string LoadProfile(char const* name) {
    VipsBlob* blob = nullptr;
    EXPECT_EQ(vips_profile_load(name, &blob, nullptr), 0);
    std::size_t bytes = 0;
    auto const* const data = static_cast<char const*>(vips_blob_get(blob, &bytes));
    std::string profile(data, bytes);
    vips_area_unref(VIPS_AREA(blob));
    return profile;
}

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

/// A TIFF block of EXIF, big-endian: an artist, the orientation 6, and a directory with a thumbnail.
std::string MakeExif() {
    using namespace std::string_literals;
    return "Exif\0\0MM\0\x2a\0\0\0\x08"s
           "\0\x02"s
           "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"s
           "\x01\x3b\0\x02\0\0\0\x04"s
           "Ann\0"s
           "\0\0\0\x26"s
           "\0\x03"s
           "\x01\x03\0\x03\0\0\0\x01\0\x06\0\0"s
           "\x02\x01\0\x04\0\0\0\x01\0\0\0\x50"s
           "\x02\x02\0\x04\0\0\0\x01\0\0\0\x08"s
           "\0\0\0\0THUMBPIX"s;
}

TEST_F(PictureFileTest, MetadataIsCarriedWithoutOrientationAndThumbnails) {
    using namespace std::string_literals;
    std::string const xmp = "<x:xmpmeta><rdf tiff:Orientation=\"6\"><dc:title>Hello</dc:title>"
                            "<xmp:Thumbnails>THUMBPIX</xmp:Thumbnails></rdf></x:xmpmeta>";
    std::string const resources = "Photoshop 3.0\0"s
                                  "8BIM\x04\x0c\0\0\0\0\0\x08THUMBPIX"s
                                  "8BIM\x04\x04\0\0\0\0\0\x09\x1c\x02\x5a\0\x04Rome\0"s;
    std::string const profile = LoadProfile("srgb");
    Craft("in.jpg", Bytes(40 * 20 * 3, 100), 40, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB, [&](VipsImage* image) {
        std::string const exif = MakeExif();
        vips_image_set_blob_copy(image, VIPS_META_EXIF_NAME, exif.data(), exif.size());
        vips_image_set_blob_copy(image, VIPS_META_XMP_NAME, xmp.data(), xmp.size());
        vips_image_set_blob_copy(image, VIPS_META_IPTC_NAME, resources.data(), resources.size());
        vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, profile.data(), profile.size());
        vips_image_set_string(image, "exif-ifd0-Artist", "Ann (Ann, ASCII, 4 components, 4 bytes)");
        vips_image_set_int(image, VIPS_META_ORIENTATION, 6);
    });
    ASSERT_NE(ReadBytes(In("in.jpg")).find("THUMBPIX"), std::string::npos);
    LoadedPicture const loaded = Read("in.jpg");
    ASSERT_NE(loaded.metadata, nullptr);
    EXPECT_EQ(loaded.picture->GetFrameFormat(), FrameFormat::Square(20, 40));
    for (std::string const name : {"out.jpg", "out.png", "out.tif", "out.webp"}) {
        Write(name, *loaded.picture, loaded.metadata.get());
        std::string const bytes = ReadBytes(In(name));
        EXPECT_EQ(bytes.find("THUMBPIX"), std::string::npos) << name;
        EXPECT_EQ(bytes.find("velnor"), std::string::npos) << name;
        bool const isTiff = name == "out.tif";
        EXPECT_EQ(bytes.find("Rome") != std::string::npos, isTiff || name == "out.jpg") << name;
        InspectFile(name, [&](VipsImage* image) {
            std::string const packet = GetBlob(image, VIPS_META_XMP_NAME);
            EXPECT_NE(packet.find("<dc:title>Hello</dc:title>"), std::string::npos) << name;
            EXPECT_NE(packet.find("tiff:Orientation=\"1\""), std::string::npos) << name;
            EXPECT_EQ(GetBlob(image, VIPS_META_ICC_NAME), profile);
            EXPECT_EQ(vips_image_get_orientation(image), 1) << name;
            EXPECT_EQ(GetBlob(image, VIPS_META_EXIF_NAME).find("Ann") != std::string::npos, !isTiff) << name;
        });
    }
}

TEST_F(PictureFileTest, MetadataOutlivesTheLoaderThatGaveIt) {
    std::string const exif = MakeExif();
    std::string const xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><!--" + std::string(5000, 'x') + "--></x:xmpmeta>";
    std::string const profile = LoadProfile("p3");
    for (std::string const name : {"a.heic", "a.avif"})
        for (int blocks = 0; blocks < 8; ++blocks) {
            Craft(name, Bytes(64 * 64 * 3, 100), 64, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB,
                  [&](VipsImage* image) {
                      auto const set = [&](int block, char const* field, std::string const& value) {
                          if ((blocks & block) != 0) vips_image_set_blob_copy(image, field, value.data(), value.size());
                      };
                      set(1, VIPS_META_EXIF_NAME, exif);
                      set(2, VIPS_META_XMP_NAME, xmp);
                      set(4, VIPS_META_ICC_NAME, profile);
                  });
            LoadedPicture const loaded = Read(name);
            Write("copy.png", *loaded.picture, loaded.metadata.get(), true);
            InspectFile("copy.png", [&](VipsImage* image) {
                EXPECT_EQ(GetBlob(image, VIPS_META_EXIF_NAME).find("Ann") != std::string::npos, (blocks & 1) != 0);
                EXPECT_EQ(GetBlob(image, VIPS_META_ICC_NAME), (blocks & 4) != 0 ? profile : "");
            });
        }
}

/// Gives a crafted image a profile, if any.
auto Labelled(std::string const& profile) {
    return [profile](VipsImage* image) {
        if (!profile.empty()) vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, profile.data(), profile.size());
    };
}

std::string Damage(std::string const& profile) {
    return profile.substr(0, 130) + std::string(profile.size() - 130, 'x');
}

TEST_F(PictureFileTest, BecomesSrgbByItsProfileOnDemand) {
    std::string const wide = MakeWideProfile();
    // Two colours, with an opacity that stays.
    Bytes const pixels{200, 100, 50, 77, 128, 130, 140, 78};
    std::vector<std::uint16_t> deep;
    for (int const value : pixels) deep.push_back(static_cast<std::uint16_t>(value * 257));
    for (std::string const& profile : {wide, std::string(), LoadProfile("srgb"), MakeGreyProfile(1.8)}) {
        Craft("8.tif", pixels, 1, 4, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB, Labelled(profile));
        Craft("16.tif", deep, 1, 4, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_RGB16, Labelled(profile));
        for (char const* name : {"8.tif", "16.tif"}) {
            EXPECT_EQ(Samples(*Read(name).picture), pixels);
            LoadedPicture const loaded = Read(name, {.toSrgb = true});
            Bytes const samples = Samples(*loaded.picture);
            if (profile != wide) {
                EXPECT_EQ(samples, pixels) << name;
                continue;
            }
            for (std::size_t i = 0; i < 8; i += 4) {
                Rgb const expected = ThroughProfile(wide, {pixels[i], pixels[i + 1], pixels[i + 2]}, true);
                for (std::size_t band = 0; band < 3; ++band) EXPECT_NEAR(samples[i + band], expected.at(band), 1);
                EXPECT_EQ(samples[i + 3], pixels[i + 3]);
            }
            Write("out.png", *loaded.picture, loaded.metadata.get(), true);
            InspectFile("out.png",
                        [](VipsImage* image) { EXPECT_EQ(GetBlob(image, VIPS_META_ICC_NAME), LoadProfile("srgb")); });
        }
    }

    Craft("grey.tif", Bytes{60, 7, 255, 9}, 2, 2, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W,
          Labelled(MakeGreyProfile(1.0)));
    LoadedPicture const grey = Read("grey.tif", {.toSrgb = true});
    ASSERT_EQ(grey.picture->GetPixFmt(), PixFmt::YA8);
    Bytes const samples = Samples(*grey.picture);
    EXPECT_NEAR(samples[0], 132, 1) << "linear 60 / 255 with the curve of sRGB";
    EXPECT_EQ(Bytes(samples.begin() + 1, samples.end()), (Bytes{7, 255, 9}));
    EXPECT_TRUE(WritePicture(In("grey.png"), *grey.picture, grey.metadata.get()).empty()) << "no profile to leave out";

    Craft("damaged.tif", Bytes{1, 2, 3}, 1, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB, Labelled(Damage(wide)));
    EXPECT_EQ(Samples(*Read("damaged.tif").picture), (Bytes{1, 2, 3}));
    EXPECT_NE(ReadError("damaged.tif", {.toSrgb = true}).find("its colour profile"), std::string::npos);
}

TEST_F(PictureFileTest, ColoursOfSrgbAreTakenIntoAProfileThatIsAnother) {
    std::string const wide = MakeWideProfile();
    for (std::string const& profile : {wide, LoadProfile("srgb"), TakeBytes(cmsCreate_sRGBProfile()), std::string(),
                                       MakeGreyProfile(1.8), Damage(wide)}) {
        Craft("in.tif", Bytes{1, 2, 3}, 1, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB, Labelled(profile));
        auto const metadata = Read("in.tif").metadata;
        for (Rgb const& given : {Rgb{255, 0, 0}, {200, 180, 150}, {10, 20, 30}}) {
            auto const at = [&](std::size_t i) { return static_cast<unsigned char>(given.at(i)); };
            Color const found = ToPhotosColor(Color(at(2), at(1), at(0), 99), metadata.get());
            EXPECT_EQ(found.GetOpacity(), 99);
            Rgb const expected = profile == wide ? ThroughProfile(wide, given, false) : given;
            int const tolerance = profile == wide ? 2 : 0;
            for (unsigned int i = 0; i < 3; ++i) EXPECT_NEAR(found[2 - i], expected.at(i), tolerance) << i;
        }
    }
}

TEST_F(PictureFileTest, AProfileForAnotherColourModelIsLeftOut) {
    Craft("in.png", Bytes{10, 20, 30}, 1, 3, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB,
          Labelled(LoadProfile("srgb")));
    auto const metadata = Read("in.png").metadata;
    Write("grey.png", *MakeNoise(*context, PixFmt::GRAY8, 5, 5), metadata.get());
    InspectFile("grey.png", [](VipsImage* image) { EXPECT_EQ(GetBlob(image, VIPS_META_ICC_NAME), ""); });
    VideoHandle const indexed = MakeNoise(*context, PixFmt::PAL8, 5, 5);
    Write("indexed.png", *indexed, metadata.get());
    InspectFile("indexed.png", [](VipsImage* image) { EXPECT_NE(GetBlob(image, VIPS_META_ICC_NAME), ""); });
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
            std::string const file = ReadBytes(In("a.png"));
            EXPECT_EQ(file[24], colors <= 2 ? 1 : colors <= 4 ? 2 : colors <= 16 ? 4 : 8) << "bits a pixel";
            EXPECT_EQ(file[25], 3) << "kind of PNG";
        }
}

TEST_F(PictureFileTest, WhatIsNoPictureIsNamedInOneLine) {
    WriteBytes(In("empty.jpg"), "");
    WriteBytes(In("text.jpg"), "This is no picture.\n");
    EXPECT_EQ(ReadError("empty.jpg"), In("empty.jpg").string() + " cannot be read: it is empty.");
    EXPECT_EQ(ReadError("missing.jpg"), In("missing.jpg").string() + " cannot be read: No such file or directory.");
    EXPECT_EQ(ReadError(""), In("").string() + " cannot be read: it is a folder.");
    EXPECT_NE(ReadError("text.jpg").find("no picture file of a known kind"), std::string::npos);
}

TEST_F(PictureFileTest, DamageIsAnErrorUnlessItIsAccepted) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 200, 150);
    ReadOptions accept;
    accept.acceptDamaged = true;
    for (std::string const name : {"a.jpg", "a.png", "a.tif", "a.webp"}) {
        Write(name, *picture);
        std::string const whole = ReadBytes(In(name));
        WriteBytes(In(name), whole.substr(0, whole.size() / 2));
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
    std::string bytes = ReadBytes(In("flipped.jpg"));
    bytes.replace(bytes.size() / 2, 40, 40, '\x55');
    bytes.replace(bytes.size() / 2 + 10, 2, "\xff\xd3");
    WriteBytes(In("flipped.jpg"), bytes);
    EXPECT_NE(ReadError("flipped.jpg"), "") << "what the decoder only warns of";
}

TEST_F(PictureFileTest, AJpegFileIsEncodedAsTheOneThatWasRead) {
    struct Coding {
        int quality;
        VipsForeignSubsample subsampling;
        bool isHalved;
    };
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    auto const tablesOf = [&](std::string const& name) {
        std::string const bytes = ReadBytes(In(name));
        return bytes.substr(bytes.find("\xff\xdb"), 69);
    };
    auto const isHalved = [&](std::string const& name) {
        std::string const bytes = ReadBytes(In(name));
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
        return DescriptionOf<FileOutputException>([&] { WritePicture(In(name), *picture, nullptr, options); });
    };
    for (char const* name : {"a.webp", "a.jxl"}) {
        EXPECT_EQ(write(name, {.isLossless = true}), "");
        EXPECT_EQ(Samples(*Read(name).picture), Samples(*picture)) << name;
    }
    for (char const* compression : {"none", "deflate"}) EXPECT_EQ(write("a.tif", {.compression = compression}), "");
    EXPECT_EQ(write("a.png", {.compression = "0"}), "");
    EXPECT_GT(ReadBytes(In("a.png")).size(), 64U * 64 * 3) << "not compressed";
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
    std::string still = ReadBytes(In("long.png"));
    still.insert(33, MakePngChunk("tEXt", "Comment" + std::string(5000, '\0')));
    WriteBytes(In("long.png"), still);
    EXPECT_EQ(Read("long.png").warnings, Lines());
    WriteBytes(In("film.png"), still.insert(33, MakePngChunk("acTL", std::string("\0\0\0\7\0\0\0\0", 8))));
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
    WriteBytes(In("huge.png"), "\x89PNG\r\n\x1a\n"s
                               "\0\0\0\x0dIHDR\0\0\xea\x60\0\0\xea\x60\x08\x02\0\0\0\x0f\xb0\xe2\x15"s
                               "\0\0\0\x0cIDAT\x78\x9c\x63\x60\x60\x60\0\0\0\x04\0\x01\xf6\x17\x38\x55"s
                               "\0\0\0\0IEND\xae\x42\x60\x82"s);
    std::string const error = DescriptionOf<FileLimitException>([&] { Read("huge.png"); });
    EXPECT_NE(error.find("60000 x 60000"), std::string::npos) << error;
    EXPECT_NE(error.find("512000000"), std::string::npos) << error;

    Write("a.png", *MakeNoise(*context, PixFmt::GRAY8, 20, 10));
    ReadOptions options;
    options.maxPixels = 199;
    EXPECT_NE(DescriptionOf<FileLimitException>([&] { Read("a.png", options); }), "");
    options.maxPixels = 200;
    EXPECT_NO_THROW(Read("a.png", options));
}

TEST_F(PictureFileTest, NamesAreTakenLiterally) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    Write("photo[Q=1].png", *picture);
    EXPECT_EQ(Samples(*Read("photo[Q=1].png").picture), Samples(*picture));
    EXPECT_EQ(CountFiles(), 1U);
}

TEST_F(PictureFileTest, WrongCallsSayWhatIsTaken) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::YUV444P, 8, 8);
    auto const error = [&](std::string const& name, IDataVideo const& video, int quality) {
        return DescriptionOf<FileOutputException>(
            [&] { WritePicture(In(name), video, nullptr, {.quality = quality}); });
    };
    EXPECT_NE(error("a.bmp", *picture, 90).find(".jpg, .jpeg, .jpe, .png, .tif, .tiff, .webp"), std::string::npos);
    EXPECT_NE(error("a", *picture, 90).find("no extension"), std::string::npos);
    EXPECT_NE(error("a.jpg", *picture, 90).find("not in yuv444p"), std::string::npos);
    VideoHandle const grey = MakeNoise(*context, PixFmt::GRAY8, 8, 8);
    EXPECT_NE(error("a.jpg", *grey, 0).find("1 to 100, not 0"), std::string::npos);
    EXPECT_NE(error("a.webp", *grey, 90), "");
    EXPECT_EQ(CountFiles(), 0U);
    EXPECT_EQ(GetWritableFormats("x/A.JPG"), (std::vector<PixFmt>{PixFmt::RGB24, PixFmt::GRAY8}));
    EXPECT_EQ(GetWritableFormats("a.png").size(), 5U);
}

TEST_F(PictureFileTest, OutputMayBeTheInputOnlyWhenAsked) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 50, 40);
    Write("a.png", *picture);
    std::string const before = ReadBytes(In("a.png"));
    LoadedPicture const loaded = Read("a.png");
    EXPECT_NE(DescriptionOf<FileOutputException>([&] { Write("a.png", *loaded.picture); }), "");
    EXPECT_EQ(ReadBytes(In("a.png")), before);
    Write("a.png", *loaded.picture, nullptr, true);
    EXPECT_EQ(Samples(*Read("a.png").picture), Samples(*picture));
    EXPECT_EQ(CountFiles(), 1U);
}

TEST_F(PictureFileTest, AnEncoderThatFailsLeavesTheOldFile) {
    WriteBytes(In("a.webp"), "old");
    VideoHandle const tooWide = MakeFlat(*context, PixFmt::RGB24, 20000, 1, {1, 2, 3}); // WebP ends at 16383
    std::string const error = DescriptionOf<FileOutputException>([&] { Write("a.webp", *tooWide, nullptr, true); });
    EXPECT_TRUE(error.starts_with(In("a.webp").string() + " cannot be written: ")) << error;
    EXPECT_EQ(ReadBytes(In("a.webp")), "old");
    EXPECT_EQ(CountFiles(), 1U);
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
