#include "Tests/Proc/Host/PictureFileFixture.h"
#include "Tests/Support/ColorProfiles.h"

namespace Velnor::Proc::Testing {
namespace {

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
    ASSERT_NE(folder.Read("in.jpg").find("THUMBPIX"), std::string::npos);
    LoadedPicture const loaded = Read("in.jpg");
    ASSERT_NE(loaded.metadata, nullptr);
    EXPECT_EQ(loaded.picture->GetFrameFormat(), FrameFormat::Square(20, 40));
    for (std::string const name : {"out.jpg", "out.png", "out.tif", "out.webp"}) {
        Write(name, *loaded.picture, loaded.metadata.get());
        std::string const bytes = folder.Read(name);
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
    EXPECT_THAT(ReadError("damaged.tif", {.toSrgb = true}), HasSubstr("its colour profile"));
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

} // namespace
} // namespace Velnor::Proc::Testing
