#include "Proc/Host/PictureFile.h"
#include "Tests/Support/ColorProfiles.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <vips/vips.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

namespace Velnor::Proc::Testing {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

/// Judged by exiftool, which shares no code with what is tested.
class MetadataTest : public ::testing::Test {
protected:
    fs::path In(std::string const& name) const { return folder.GetPath() / name; }

    /// Runs exiftool in the folder and returns what it prints.
    std::string RunExifTool(std::string const& arguments) const {
        std::string const command = "cd " + folder.GetPath().string() + " && exiftool -q " + arguments + " 2>/dev/null";
        std::unique_ptr<FILE, int (*)(FILE*)> const pipe(popen(command.c_str(), "r"), &pclose);
        std::string output;
        std::array<char, 4096> piece{};
        while (std::size_t const bytes = fread(piece.data(), 1, piece.size(), pipe.get()))
            output.append(piece.data(), bytes);
        return output;
    }

    /// All values of files as numbers and texts, by file and by group and name.
    std::map<std::string, Json> ReadValues(std::string const& files) const {
        std::map<std::string, Json> values;
        std::string const output = RunExifTool("-j -n -G1 -struct -b " + files);
        for (Json const& one : Json::parse(output)) values[one.at("SourceFile")] = one;
        return values;
    }

    void MakePicture(std::string const& name, PixFmt format = PixFmt::RGB24) {
        WritePicture(In(name), *MakeNoise(*context, format, 48, 32), nullptr, {});
    }

    std::vector<std::string> Convert(std::string const& from, std::string const& to, WriteOptions options = {}) {
        LoadedPicture const loaded = ReadPicture(In(from), *context);
        options.overwrite = true;
        return WritePicture(In(to), *loaded.picture, loaded.metadata.get(), options);
    }

    TemporaryFolder const folder;
    ContextHandle const context = MakeShared<Context>();
};

/// One of the values, by any of the names that formats have for it.
std::string FindValue(Json const& values, std::vector<std::string> const& names) {
    for (std::string const& name : names)
        if (values.contains(name))
            return values[name].is_string() ? values[name].get<std::string>() : values[name].dump();
    return {};
}

/// EXIF with a maker's note that counts places from the block's begin, and a second directory with a thumbnail.
std::string MakeBlockWithMakerNote() {
    using namespace std::string_literals;
    return "MM\0\x2a\0\0\0\x08"s
           "\0\x03\x01\x0f\0\x02\0\0\0\x06\0\0\0\x32"s // the maker's name, at 50
           "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"s       // orientation 6
           "\x87\x69\0\x04\0\0\0\x01\0\0\0\x38"s       // the EXIF directory, at 56
           "\0\0\0\x8c"s                               // the second directory, at 140
           "Canon\0"s
           "\0\x03\x92\x7c\0\x07\0\0\0\x2a\0\0\0\x62"s // the note of 42 bytes, at 98
           "\xa0\x02\0\x03\0\0\0\x01\0\x10\0\0\xa0\x03\0\x03\0\0\0\x01\0\x10\0\0\0\0\0\0"s
           "\0\x02\0\x07\0\x02\0\0\0\x0b\0\0\0\x80"s // a text at 128
           "\0\x08\0\x04\0\0\0\x01\0\x0f\x42\x41\0\0\0\0"s
           "Firm 1.2.3\0\0"s
           "\0\x03\x01\x03\0\x03\0\0\0\x01\0\x06\0\0"s // at 140
           "\x02\x01\0\x04\0\0\0\x01\0\0\0\xb6\x02\x02\0\x04\0\0\0\x01\0\0\0\x0a\0\0\0\0"s
           "THUMBNAIL!"s; // at 182
}

TEST_F(MetadataTest, MakerNotesKeepTheirPlaceAndThumbnailsGo) {
    MakePicture("plain.jpg");
    std::string const plain = folder.Read("plain.jpg");
    std::string const content = std::string("Exif\0\0", 6) + MakeBlockWithMakerNote();
    std::ofstream(In("in.jpg"), std::ios::binary)
        << plain.substr(0, 2) << "\xff\xe1" << '\0' << static_cast<char>(content.size() + 2) << content
        << plain.substr(2);
    std::string const note = content.substr(6 + 98, 42);
    std::string const files = "a.jpg a.png a.tif a.webp a.avif a.jxl again.jpg ";
    for (char const* name : {"a.jpg", "a.png", "a.tif", "a.webp", "a.avif", "a.jxl"}) {
        Convert("in.jpg", name);
        EXPECT_EQ(folder.Read(name).find("THUMBNAIL!"), std::string::npos) << name;
        EXPECT_TRUE(std::string(name) == "a.tif" || folder.Read(name).find(note) != std::string::npos) << name;
    }
    Convert("a.tif", "again.jpg");
    for (auto const& [file, values] : ReadValues(files)) {
        EXPECT_EQ(FindValue(values, {"Canon:CanonFirmwareVersion"}), "Firm 1.2.3") << file;
        EXPECT_EQ(FindValue(values, {"Canon:FileNumber"}), "1000001") << file;
        EXPECT_EQ(FindValue(values, {"IFD0:Orientation"}), "1") << file;
        EXPECT_EQ(FindValue(values, {"ExifIFD:ExifImageWidth"}), "32") << file;
        EXPECT_EQ(FindValue(values, {"ExifTool:Warning", "ExifTool:Error"}), "") << file;
    }
}

TEST_F(MetadataTest, RawFilesAreDevelopedUprightWithTheirMetadata) {
    ASSERT_EQ(VIPS_INIT("test"), 0);
    std::vector<std::uint16_t> mosaic(64 * 48);
    for (std::size_t i = 0; i < mosaic.size(); ++i) mosaic[i] = i % 64 < 32 ? 2000 : 20000;
    VipsImage* const image =
        vips_image_new_from_memory(mosaic.data(), mosaic.size() * 2, 64, 48, 1, VIPS_FORMAT_USHORT);
    ASSERT_EQ(vips_tiffsave(image, In("in.dng").c_str(), nullptr), 0);
    g_object_unref(image);
    RunExifTool("-overwrite_original -m -n -IFD0:PhotometricInterpretation=32803 -IFD0:CFARepeatPatternDim='2 2' "
                "-IFD0:CFAPattern2='0 1 1 2' -DNGVersion='1 4 0 0' -UniqueCameraModel=Test -Make=Test -Model=One "
                "-ColorMatrix1='3.24 -1.54 -0.5 -0.97 1.88 0.04 0.06 -0.2 1.06' -AsShotNeutral='1 1 1' "
                "-CalibrationIlluminant1=21 -IFD0:WhiteLevel=40000 -IFD0:SubfileType=0 -IFD0:Orientation=6 "
                "-Artist=Ann -GPSLatitude=48.5 -GPSLatitudeRef=N in.dng");
    LoadedPicture const loaded = ReadPicture(In("in.dng"), *context);
    EXPECT_EQ(loaded.picture->GetFrameFormat(), FrameFormat::Square(48, 64));
    auto const at = [&](std::uint64_t x, std::uint64_t y) { return loaded.picture->GetPlane(0).GetRow(y) + 3 * x; };
    EXPECT_GT(at(24, 48)[1], at(24, 16)[1] + 50) << "what was right is below";
    for (std::uint64_t const y : {16U, 48U})
        for (int channel : {0, 2}) EXPECT_NEAR(at(24, y)[channel], at(24, y)[1], 3) << "neutral as the camera has it";
    Convert("in.dng", "out.jpg");
    auto values = ReadValues("out.jpg");
    EXPECT_EQ(FindValue(values["out.jpg"], {"IFD0:Artist"}), "Ann");
    EXPECT_EQ(FindValue(values["out.jpg"], {"GPS:GPSLatitude"}), "48.5");
    EXPECT_EQ(FindValue(values["out.jpg"], {"IFD0:Orientation"}), "1");
    fs::resize_file(In("in.dng"), 3000);
    EXPECT_THROW(ReadPicture(In("in.dng"), *context), FileInputException);
}

TEST_F(MetadataTest, WhatAFormatDoesNotHoldIsSaid) {
    MakePicture("none.webp");
    EXPECT_EQ(folder.Read("none.webp").find("EXIF"), std::string::npos) << "nothing is made up";
    MakePicture("in.jpg");
    RunExifTool("-overwrite_original -Artist=Ann -IPTC:City=Rome -IPTC:EditStatus=new -Comment=remark "
                "-UserComment=mine -Photoshop:URL=http://a.b in.jpg");
    EXPECT_EQ(Convert("in.jpg", "out.jpg"), std::vector<std::string>());
    EXPECT_EQ(Convert("in.jpg", "out.tif"), (std::vector<std::string>{"in TIFF, the comment is left out"}));
    EXPECT_EQ(Convert("in.jpg", "out.webp"),
              (std::vector<std::string>{"in WebP, the comment is left out; image resources are left out; IPTC is kept "
                                        "as XMP, as far as that knows its fields"}));
    EXPECT_EQ(Convert("in.jpg", "out.ppm"),
              (std::vector<std::string>{"in PNM, the comment is left out; image resources are left out; IPTC is left "
                                        "out; EXIF is left out"}));
}

TEST_F(MetadataTest, WhatHasBecomeSrgbSaysSo) {
    MakePicture("in.jpg");
    std::ofstream(In("wide.icc"), std::ios::binary) << MakeWideProfile();
    RunExifTool("-overwrite_original -n '-ICC_Profile<=wide.icc' -EXIF:ColorSpace=65535 -InteropIndex=R03 "
                "-XMP-exif:ColorSpace=65535 -XMP-photoshop:ICCProfileName=Wide -XMP-photoshop:ColorMode=3 in.jpg");
    for (bool const toSrgb : {false, true}) {
        LoadedPicture const loaded = ReadPicture(In("in.jpg"), *context, {.toSrgb = toSrgb});
        for (std::string const to : {"jpg", "png", "tif", "webp", "avif", "jxl", "ppm"}) {
            std::string const name = "out." + to;
            auto const losses = WritePicture(In(name), *loaded.picture, loaded.metadata.get(), {.overwrite = true});
            if (to == "ppm") {
                EXPECT_EQ(losses.front().find("profile") == std::string::npos, toSrgb) << losses.front();
                continue;
            }
            EXPECT_EQ(losses, std::vector<std::string>()) << name;
            Json const values = ReadValues(name).at(name);
            EXPECT_EQ(FindValue(values, {"ExifIFD:ColorSpace"}), toSrgb ? "1" : "65535") << name;
            EXPECT_EQ(FindValue(values, {"InteropIFD:InteropIndex"}), toSrgb ? "R98" : "R03") << name;
            EXPECT_EQ(FindValue(values, {"XMP-exif:ColorSpace"}), toSrgb ? "1" : "65535") << name;
            EXPECT_EQ(FindValue(values, {"XMP-photoshop:ICCProfileName"}), toSrgb ? "" : "Wide") << name;
        }
    }
}

TEST_F(MetadataTest, PreviewsGoWhereThumbnailsAreLeftOut) {
    MakePicture("plain.jpg");
    std::string const plain = folder.Read("plain.jpg");
    std::string block = MakeBlockWithMakerNote();
    std::string const preview = "\xff\xd8\xff\xe0xx\xff\xd8\xff\xd9Q\xff\xd9"; // With one of its own inside.
    block.replace(block.find("Firm 1.2.3"), 10, "Firm 1\0\0\0\0", 10);
    std::string const content = std::string("Exif\0\0", 6) + block + preview;
    std::ofstream(In("in.jpg"), std::ios::binary)
        << plain.substr(0, 2) << "\xff\xe1" << '\0' << static_cast<char>(content.size() + 2) << content
        << plain.substr(2);
    RunExifTool("-overwrite_original -XMP-GImage:ImageData=PICTURE -XMP-dc:Title=Hello in.jpg");
    for (Strip const strip : {Strip::None, Strip::Thumbnail}) {
        Convert("in.jpg", "out.jpg", {.strip = strip});
        std::string const bytes = folder.Read("out.jpg");
        EXPECT_EQ(bytes.find(preview) == std::string::npos, strip == Strip::Thumbnail);
        auto const values = ReadValues("out.jpg");
        EXPECT_EQ(FindValue(values.at("out.jpg"), {"Canon:CanonFirmwareVersion"}), "Firm 1");
        EXPECT_EQ(FindValue(values.at("out.jpg"), {"XMP-dc:Title"}), "Hello");
        EXPECT_EQ(values.at("out.jpg").contains("XMP-GImage:ImageData"), strip == Strip::None);
    }
}

TEST_F(MetadataTest, MetadataIsLeftOutAndTimesAreKeptWhenAsked) {
    MakePicture("in.jpg");
    RunExifTool("-overwrite_original -Artist=Ann -GPSLatitude=48 -GPSLongitude=11 -XMP-exif:GPSAltitude=500 "
                "-XMP-dc:Title=Hello -XResolution=300 -ResolutionUnit=inches -IPTC:City=Rome in.jpg");
    std::array<timespec, 2> const times{timespec{1'000'000'000, 5}, timespec{1'100'000'000, 7}};
    ASSERT_EQ(utimensat(AT_FDCWD, In("in.jpg").c_str(), times.data(), 0), 0);
    for (char const* name : {"gps.jpg", "gps.webp"}) Convert("in.jpg", name, {.strip = Strip::Gps, .keepTimes = true});
    Convert("in.jpg", "all.jpg", {.strip = Strip::All});
    struct stat status {};
    ASSERT_EQ(stat(In("gps.jpg").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'100'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 7);
    auto values = ReadValues("gps.jpg gps.webp all.jpg");
    for (char const* name : {"gps.jpg", "gps.webp"}) {
        EXPECT_EQ(FindValue(values[name], {"IFD0:Artist"}), "Ann");
        EXPECT_EQ(FindValue(values[name], {"XMP-dc:Title"}), "Hello");
        EXPECT_EQ(values[name].dump().find("GPS"), std::string::npos) << values[name].dump();
    }
    EXPECT_EQ(FindValue(values["all.jpg"], {"JFIF:XResolution"}), "300");
    for (char const* word : {"Ann", "Hello", "Rome", "GPS"})
        EXPECT_EQ(values["all.jpg"].dump().find(word), std::string::npos) << word;
}

TEST_F(MetadataTest, EveryValueGoesFromEveryFormatToEveryOther) {
    std::vector<std::string> const inputs{"jpg", "png", "tif", "webp", "heic", "avif", "jxl"};
    std::vector<std::string> const outputs{"jpg", "png", "tif", "webp", "avif", "jxl"};
    for (std::string const& kind : inputs) MakePicture("in." + kind);
    std::string const packet(70000, 'x');
    std::ofstream(In("long.txt")) << packet;
    std::string const common =
        "-overwrite_original -m -n -EXIF:Artist=Ann -EXIF:Copyright=2020 -EXIF:DateTimeOriginal='2020:01:02 03:04:05' "
        "-EXIF:Orientation=6 -EXIF:ExifImageWidth=4000 -EXIF:ExifImageHeight=3000 -EXIF:FNumber=2.8 "
        "-EXIF:XResolution=300 -EXIF:YResolution=300 -EXIF:ResolutionUnit=2 "
        "-GPS:GPSLatitude=48.5 -GPS:GPSLatitudeRef=N -GPS:GPSLongitude=11.25 -GPS:GPSLongitudeRef=W "
        "-XMP-dc:Title=Hello -XMP-tiff:Orientation=6 -XMP-xmp:Rating=4 '-XMP-dc:Description<=long.txt' ";
    VipsBlob* profile = nullptr;
    ASSERT_EQ(VIPS_INIT("test"), 0);
    ASSERT_EQ(vips_profile_load("p3", &profile, nullptr), 0);
    std::size_t bytes = 0;
    auto const* const data = static_cast<char const*>(vips_blob_get(profile, &bytes));
    std::ofstream(In("profile.icc"), std::ios::binary).write(data, static_cast<std::streamsize>(bytes));
    vips_area_unref(VIPS_AREA(profile));
    std::string const profileName =
        FindValue(ReadValues("profile.icc").at("profile.icc"), {"ICC_Profile:ProfileDescription"});
    ASSERT_NE(profileName, "");
    RunExifTool(common + "'-ICC_Profile<=profile.icc' in.jpg in.png in.tif in.webp in.heic in.avif in.jxl");
    RunExifTool("-overwrite_original -IPTC:City=Rome -IPTC:Keywords=one -IPTC:Keywords=two in.jpg in.tif in.png");
    RunExifTool("-overwrite_original -Comment='a remark' in.jpg in.png");

    std::string files;
    for (std::string const& from : inputs)
        for (std::string const& to : outputs) {
            std::string const name = from + "-to." + to;
            Convert("in." + from, name);
            files += name + " ";
            if (to == "jxl") Convert(name, from + "-again.png"); // Its profile is where exiftool does not look.
        }
    for (auto const& [file, values] : ReadValues(files + "*-again.png")) {
        std::string const from = file.substr(0, file.find('-'));
        std::map<std::string, std::vector<std::string>> names{
            {"Ann", {"IFD0:Artist"}},
            {"2020", {"IFD0:Copyright"}},
            {"2020:01:02 03:04:05", {"ExifIFD:DateTimeOriginal"}},
            {"2.8", {"ExifIFD:FNumber"}},
            {"48.5", {"GPS:GPSLatitude"}},
            {"11.25", {"GPS:GPSLongitude"}},
            {"W", {"GPS:GPSLongitudeRef"}},
            {"Hello", {"XMP-dc:Title"}},
            {"4", {"XMP-xmp:Rating"}},
            {packet, {"XMP-dc:Description"}},
            {"300", {"IFD0:XResolution"}},
        };
        if (from == "jpg" || from == "png" || from == "tif")
            names["Rome"] = {"IPTC:City", "IPTC2:City", "XMP-photoshop:City"};
        if (from == "jpg" || from == "png") names["a remark"] = {"File:Comment", "PNG:Comment", "ExifIFD:UserComment"};
        bool const hadProfile = from != "heic" && from != "avif" && from != "jxl"; // exiftool cannot give them one.
        if (hadProfile && !file.ends_with(".jxl")) names[profileName] = {"ICC_Profile:ProfileDescription"};
        for (auto const& [expected, places] : names)
            EXPECT_TRUE(FindValue(values, places) == expected)
                << file << ": " << places.front() << " is " << FindValue(values, places).substr(0, 100);
        std::string const keywords = FindValue(values, {"IPTC:Keywords", "IPTC2:Keywords", "XMP-dc:Subject"});
        if (names.contains("Rome")) {
            EXPECT_EQ(keywords, "[\"one\",\"two\"]") << file;
        }
        EXPECT_EQ(FindValue(values, {"IFD0:Orientation"}), "1") << file;
        EXPECT_EQ(FindValue(values, {"XMP-tiff:Orientation"}), "1") << file;
        std::string const width = FindValue(values, {"ExifIFD:ExifImageWidth"});
        EXPECT_TRUE(width == "48" || width == "32") << file << ": " << width;
        EXPECT_EQ(FindValue(values, {"ExifTool:Warning", "ExifTool:Error"}), "") << file;
    }
}

} // namespace
} // namespace Velnor::Proc::Testing
