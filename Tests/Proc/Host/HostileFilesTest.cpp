#include "Proc/Host/PictureFile.h"
#include "Tests/Support/Bombs.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <vips/vips.h>

#include <cstdlib>
#include <fstream>
#include <set>

namespace Velnor::Proc::Testing {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

/// The sanitizers hold memory of their own, and what is freed for a while.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool COUNTS_MEMORY = false;
#else
constexpr bool COUNTS_MEMORY = true;
#endif

/// The number after a word in a file of the system about this process.
std::uint64_t GetOwn(char const* file, std::string const& name) {
    std::ifstream status(file);
    for (std::string word; status >> word;)
        if (word == name && status >> word) return std::stoull(word);
    return 0;
}

/// The most memory that the process has held since it was last reset, in bytes.
std::uint64_t GetPeak() { return GetOwn("/proc/self/status", "VmHWM:") << 10; }

std::uint64_t GetBytesRead() { return GetOwn("/proc/self/io", "rchar:"); }

/// What the command line can be handed by people who mean no good.
class HostileFilesTest : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(VIPS_INIT("test"), 0); }

    fs::path Put(std::string const& name, std::string const& bytes) const {
        std::ofstream(folder.GetPath() / name, std::ios::binary) << bytes;
        return folder.GetPath() / name;
    }
    std::string Get(fs::path const& file) const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// The description of the Error that reading throws; empty when it throws none.
    template <class Error>
    std::string ReadError(fs::path const& file, ReadOptions const& options = {}) const {
        try {
            ReadPicture(file, *context, options);
            return {};
        } catch (Error const& error) {
            return DescribeException(error);
        }
    }

    TemporaryFolder const folder;
    ContextHandle const context = MakeShared<Context>();
};

TEST_F(HostileFilesTest, OnlyTheKindsThatAreReadHaveOpenLoaders) {
    fs::path const matrix = Put("matrix.jpg", "2 2\n1 2\n3 4\n");
    EXPECT_THAT(ReadError<FileInputException>(matrix), HasSubstr("read are JPEG, PNG, TIFF, WebP, GIF, PNM, HEIC"));
    std::set<std::string> open;
    vips_type_map_all(
        g_type_from_name("VipsForeignLoad"),
        [](GType type, void* names) -> void* {
            auto const* const loader = VIPS_OPERATION_CLASS(g_type_class_ref(type));
            if (!G_TYPE_IS_ABSTRACT(type) && (loader->flags & VIPS_OPERATION_BLOCKED) == 0)
                static_cast<std::set<std::string>*>(names)->insert(VIPS_OBJECT_CLASS(loader)->nickname);
            return nullptr;
        },
        &open);
    EXPECT_THAT(open, testing::ElementsAre("gifload", "gifload_buffer", "gifload_source", "heifload", "heifload_buffer",
                                           "heifload_source", "jpegload", "jpegload_buffer", "jpegload_source",
                                           "jxlload", "jxlload_buffer", "jxlload_source", "pngload", "pngload_buffer",
                                           "pngload_source", "ppmload", "ppmload_source", "tiffload", "tiffload_buffer",
                                           "tiffload_source", "webpload", "webpload_buffer", "webpload_source"));
}

TEST_F(HostileFilesTest, ARefusedKindIsNamed) {
    for (auto const& [kind, bytes] : {std::pair{"SVG", "<?xml version='1.0'?><svg width='3'/>"}, {"PDF", "%PDF-1.7\n"}})
        EXPECT_THAT(ReadError<FileInputException>(Put("photo.jpg", bytes)),
                    HasSubstr("photo.jpg cannot be read: " + std::string(kind) + " is not read; read are JPEG, "));
}

TEST_F(HostileFilesTest, BitmapsAreReadAndTheirHeadersChecked) {
    // 3 x 2 pixels of 24 bits, the lower row first, each row padded to 12 bytes.
    std::string bitmap("BM\x4E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\3\0\0\0\2\0\0\0\1\0\x18\0", 30);
    bitmap.resize(54);
    for (char i = 1; i <= 24; ++i) bitmap += i;
    auto const rows = [&](char const* name) { return Samples(*ReadPicture(Put(name, bitmap), *context).picture); };
    EXPECT_EQ(rows("up.bmp"), (std::vector<unsigned char>{15, 14, 13, 18, 17, 16, 21, 20, 19, //
                                                          3, 2, 1, 6, 5, 4, 9, 8, 7}));
    bitmap.replace(22, 4, "\xFE\xFF\xFF\xFF"); // -2 rows: the upper one first.
    EXPECT_EQ(rows("down.jpg").front(), 3);
    EXPECT_THAT(ReadError<FileInputException>(Put("cut.bmp", bitmap.substr(0, 60))),
                HasSubstr("cut.bmp cannot be read"));
    bitmap.replace(18, 4, "\0\0\4\0", 4); // 262,144 columns.
    ReadOptions options;
    options.maxPixels = 1000;
    EXPECT_THAT(ReadError<FilePixelsException>(Put("wide.bmp", bitmap), options), HasSubstr("262144 x 2 are"));
}

TEST_F(HostileFilesTest, PnmFilesOfAnyHighestLevelFillTheRange) {
    using namespace std::string_literals;
    for (std::string const& file : {"P5\n3 1\n15\n\0\5\x0f"s, "P2\n3 1\n15\n0 5 15"s,
                                    "P5\n3 1\n1023\n\0\0\1\x55\3\xff"s, "P2\n3 1\n255\n0 85 255"s})
        EXPECT_EQ(Samples(*ReadPicture(Put("levels.pgm", file), *context).picture),
                  (std::vector<unsigned char>{0, 85, 255}))
            << file.substr(0, 12);
}

TEST_F(HostileFilesTest, WhatIsNoRegularFileIsRefusedUnread) {
    fs::path const pipe = folder.GetPath() / "pipe.jpg";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0); // Opening it for reading would wait for a writer.
    EXPECT_THAT(ReadError<FileInputException>(pipe), HasSubstr("it is a pipe, not a file"));
    EXPECT_THAT(ReadError<FileInputException>("/dev/zero"), HasSubstr("it is a device, not a file"));
    fs::create_symlink("/dev/zero", folder.GetPath() / "link.jpg");
    EXPECT_THAT(ReadError<FileInputException>(folder.GetPath() / "link.jpg"), HasSubstr("it is a device"));
    fs::path const zeros = Put("zeros.jpg", "");
    fs::resize_file(zeros, 64 << 20);
    std::uint64_t const before = GetBytesRead();
    EXPECT_THAT(ReadError<FileInputException>(zeros), HasSubstr("no picture file of a known kind"));
    EXPECT_LT(GetBytesRead(), before + (16 << 20)) << "of which most are modules that read other kinds";
}

TEST_F(HostileFilesTest, BombsAreRefusedBeforeTheyUnpack) {
    constexpr std::uint64_t ALLOWED = 40 << 20;
    char const* const kept = std::getenv("VELNOR_BOMBS"); // A folder to leave them in, for measurements.
    ReadError<FileInputException>(Put("none.jpg", "No picture: this loads all that reads pictures.\n"));
    for (Bomb const& bomb : MakeBombs()) {
        fs::path const file = Put(bomb.name, bomb.bytes);
        if (kept != nullptr) fs::copy_file(file, fs::path(kept) / bomb.name, fs::copy_options::overwrite_existing);
        std::ofstream("/proc/self/clear_refs") << 5; // Lets the peak begin anew.
        std::uint64_t const before = GetPeak();
        ReadOptions accept;
        accept.acceptDamaged = true;
        EXPECT_THAT(ReadError<FileLimitException>(file, accept), HasSubstr(" is too large")) << bomb.name;
        if (COUNTS_MEMORY) {
            EXPECT_LT(GetPeak(), before + ALLOWED) << bomb.name;
        }
    }
}

TEST_F(HostileFilesTest, LimitsAreThoseOfTheHeader) {
    VideoHandle const flat = MakeFlat(*context, PixFmt::RGB24, 2000, 1000, {1, 2, 3});
    fs::path const file = folder.GetPath() / "flat.png";
    WritePicture(file, *flat, nullptr);
    ASSERT_LT(fs::file_size(file), 6'000'000U / 400);
    ReadOptions options;
    options.maxExpansion = 1;
    EXPECT_EQ(ReadError<FileException>(file, options), "") << "a small picture may be flat";
    options.maxMemory = 7'000'000;
    EXPECT_EQ(ReadError<FileException>(file, options), "");
    options.maxMemory = 6'000'000;
    EXPECT_THAT(ReadError<FileMemoryException>(file, options),
                HasSubstr("to read 2000 x 1000 pixels takes 7 MB of memory, the limit is 6 MB"));
}

TEST_F(HostileFilesTest, DamageBesideThePixelsIsDamage) {
    VipsBlob* profile = nullptr;
    ASSERT_EQ(vips_profile_load("srgb", &profile, nullptr), 0);
    std::size_t profileBytes = 0;
    void const* const content = vips_blob_get(profile, &profileBytes);
    std::string const xmp = "<x:xmpmeta>" + std::string(5000, ' ') + "</x:xmpmeta>";
    VipsImage* image = nullptr;
    vips_black(&image, 40, 30, "bands", 3, nullptr);
    vips_image_set_blob_copy(image, VIPS_META_ICC_NAME, content, profileBytes);
    vips_image_set_blob_copy(image, VIPS_META_XMP_NAME, xmp.data(), xmp.size());
    for (std::string const name : {"a.tif", "a.png", "a.webp"}) {
        fs::path const file = folder.GetPath() / name;
        ASSERT_EQ(vips_image_write_to_file(image, file.c_str(), nullptr), 0) << vips_error_buffer();
        std::string const whole = Get(file);
        ASSERT_EQ(ReadError<FileException>(file), "") << name;
        for (std::size_t const cut : {1U, 8U, 60U, 500U}) {
            Put(name, whole.substr(0, whole.size() - cut));
            EXPECT_THAT(ReadError<FileInputException>(file), HasSubstr(" cannot be read: ")) << name << " less " << cut;
        }
    }
    g_object_unref(image);
    vips_area_unref(VIPS_AREA(profile));
}

std::string Segment(char marker, std::string const& content) {
    std::size_t const bytes = content.size() + 2;
    return {std::string{'\xff', marker, static_cast<char>(bytes >> 8), static_cast<char>(bytes)} + content};
}

std::string ProfilePart(char number, char count) {
    return Segment('\xe2', std::string("ICC_PROFILE\0", 12) + number + count + std::string(100, 'x'));
}

/// A piece of 10 bytes of extended XMP of so many.
std::string ExtendedPart(char place, char bytes) {
    return Segment('\xe1', std::string("http://ns.adobe.com/xmp/extension/\0", 35) + std::string(32, 'A') +
                               std::string(3, '\0') + bytes + std::string(3, '\0') + place + std::string(10, ' '));
}

TEST_F(HostileFilesTest, MetadataThatIsNotAllThereIsDamage) {
    using namespace std::string_literals;
    VideoHandle const noise = MakeNoise(*context, PixFmt::RGB24, 40, 30);
    auto const make = [&](std::string const& name) {
        WritePicture(folder.GetPath() / name, *noise, nullptr, {.overwrite = true});
        return Get(folder.GetPath() / name);
    };
    auto const insert = [](std::string whole, std::size_t at, std::string const& part) {
        return whole.insert(at, part);
    };
    std::string const jpeg = make("plain.jpg");
    auto const jpegWith = [&](std::string const& segments) { return insert(jpeg, 2, segments); };
    std::string const pointer =
        Segment('\xe1', "http://ns.adobe.com/xap/1.0/\0<x:xmpmeta><rdf:RDF><rdf:D xmpNote:HasExtendedXMP=\""s +
                            std::string(32, 'A') + "\"/></rdf:RDF></x:xmpmeta>");
    std::string const exif = "Exif\0\0II*\0\x08\0\0\0\1\0"s;
    std::string const artist = "\x3b\1\2\0\x20\0\0\0\x1a\0\0\0\0\0\0\0"s; // 32 bytes at 26
    std::string const webp = make("plain.webp");
    auto const little = [](std::size_t value) {
        return std::string{static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16), 0};
    };
    auto const webpWith = [&](std::string const& chunks) {
        std::string const body =
            "WEBPVP8X\x0a\0\0\0\x08\0\0\0\x27\0\0\x1d\0\0"s + webp.substr(webp.find("VP8 ")) + chunks;
        return "RIFF" + little(body.size()) + body;
    };
    std::string const jxl = "\0\0\0\x0cJXL \x0d\x0a\x87\x0a\0\0\0\x14"s + "ftypjxl \0\0\0\0jxl "s;
    std::string const stream = make("plain.jxl");
    std::string const size =
        "\0\0"s + static_cast<char>((stream.size() + 8) >> 8) + static_cast<char>(stream.size() + 8);
    std::string const boxed = jxl + size + "jxlc" + stream;
    struct Case {
        char const* name;
        std::string bytes;
        char const* damage; ///< None: the file is whole.
    };
    std::vector<Case> const cases{
        {"a.jpg", jpegWith(ProfilePart(1, 3) + ProfilePart(3, 3)), "its colour profile misses segment 2 of 3"},
        {"b.jpg", jpegWith(ProfilePart(2, 2)), "its colour profile misses segment 1 of 2"},
        {"c.jpg", jpegWith(ProfilePart(1, 1)), "its colour profile is cut short"},
        {"d.jpg", jpegWith(pointer), "its extended XMP misses a part"},
        {"e.jpg", jpegWith(pointer + ExtendedPart(0, 30) + ExtendedPart(20, 30)), "its extended XMP misses a part"},
        {"f.jpg", jpegWith(pointer + ExtendedPart(10, 20) + ExtendedPart(0, 20)), nullptr},
        {"g.jpg", jpegWith(Segment('\xe1', exif + artist)), "in its EXIF, its tag 315 lies beyond its end"},
        {"h.jpg", jpegWith(Segment('\xe1', exif + artist + std::string(32, 'x'))), nullptr},
        {"i.jpg", jpegWith(Segment('\xe1', "Exif\0\0nothing to follow"s)), "in its EXIF, it does not begin with"},
        {"j.jpg", jpegWith(Segment('\xed', "Photoshop 3.0\0008BIM\4\4\0\0\0\0\0\x09\x1c\2"s)),
         "its image resources are cut short"},
        {"a.webp", webpWith(""), "its chunk EXIF is missing"},
        {"b.webp", webpWith("EXIF" + little(60) + exif), "its chunk EXIF is cut short"},
        {"c.webp", webpWith("EXIF" + little(14) + exif.substr(6, 8) + std::string(6, '\0')), nullptr},
        {"a.jxl", boxed + "\0\0\0\x40"s + "Exif\0\0\0\0"s, "its box Exif is cut short"},
        {"b.jxl", boxed + "\0\0\0\x0c"s + "Exif\0\0\0\x40"s, "its EXIF is cut short"},
        {"c.jxl", boxed + "\0\0\0\x10"s + "brobxml \xff\xff\xff\xff"s, "its box xml  cannot be unpacked"},
        {"d.jxl", boxed + "\0\0\0\x0cxml mine"s, nullptr},
        {"a.pgm", "P2\n3 3\n255\n1 2 3 4 5 6 7 8", "it ends after row 2 of 3"},
        {"b.pgm", "P2\n# 3\n3 3\n255\n1 2 3 4 5 6 7 8 9", nullptr},
        {"c.pbm", "P4\n9 3\n1234", "it ends after row 2 of 3"},
        {"d.pbm", "P1\n3 2\n011 1\n1", "it ends after row 1 of 2"},
        {"e.ppm", "P6\n1 3\n1023\n\1\1\1\1\1\1\1"s, "it ends after row 1 of 3"},
        {"f.ppm", "P6\n1 1\n65535 \1\1\1\1\1\1"s, nullptr},
    };
    auto const accept = [&](fs::path const& file) {
        std::string const error = ReadError<FileException>(file, {.acceptDamaged = true});
        return error.empty() ? ReadPicture(file, *context, {.acceptDamaged = true}).warnings : std::vector{error};
    };
    for (Case const& each : cases) {
        fs::path const file = Put(each.name, each.bytes);
        if (each.damage == nullptr) {
            EXPECT_EQ(ReadError<FileException>(file), "") << each.name;
            EXPECT_THAT(accept(file), Each(Not(HasSubstr("damaged")))) << each.name;
            continue;
        }
        EXPECT_THAT(ReadError<FileDamageException>(file), HasSubstr(each.damage)) << each.name;
        EXPECT_THAT(accept(file), Contains(testing::StartsWith("it is damaged: "s + each.damage))) << each.name;
    }
}

TEST_F(HostileFilesTest, ItemsBeyondTheEndOfAHeifFileAreDamage) {
    VideoHandle const noise = MakeNoise(*context, PixFmt::RGB24, 64, 64);
    for (std::string const name : {"a.avif", "a.heic"}) {
        fs::path const file = folder.GetPath() / name;
        WritePicture(file, *noise, nullptr);
        std::string const whole = Get(file);
        EXPECT_EQ(ReadError<FileException>(file), "") << name;
        for (std::size_t const cut : {1U, 20U}) {
            Put(name, whole.substr(0, whole.size() - cut));
            EXPECT_THAT(ReadError<FileDamageException>(file), HasSubstr("lies beyond its end")) << name;
        }
        Put(name, whole + "Trailing matter of a program");
        EXPECT_EQ(ReadError<FileException>(file), "") << name;
    }
}

TEST_F(HostileFilesTest, OfDamagedFilesThatAreReadAsAWholeTheRestIsKept) {
    VideoHandle const noise = MakeNoise(*context, PixFmt::RGB24, 200, 144);
    WritePicture(folder.GetPath() / "noise.png", *noise, nullptr);
    VipsImage* const image = vips_image_new_from_file((folder.GetPath() / "noise.png").c_str(), nullptr);
    ReadOptions accept;
    accept.acceptDamaged = true;
    for (std::string const suffix : {".png[interlace]", ".webp[lossless]"}) {
        fs::path const file = folder.GetPath() / ("a" + suffix.substr(0, suffix.find('[')));
        ASSERT_EQ(vips_image_write_to_file(image, (folder.GetPath() / ("a" + suffix)).c_str(), nullptr), 0);
        std::string const whole = Get(file);
        LoadedPicture const undamaged = ReadPicture(file, *context, accept);
        EXPECT_EQ(Samples(*undamaged.picture), Samples(*noise)) << "whole: " << suffix;
        EXPECT_TRUE(undamaged.warnings.empty()) << suffix;
        Put(file.filename(), whole.substr(0, whole.size() * 2 / 3));
        EXPECT_NE(ReadError<FileInputException>(file), "") << suffix;
        auto const [kept, metadata, warnings] = ReadPicture(file, *context, accept);
        EXPECT_EQ(warnings.size(), 1U) << suffix;
        // In an interlaced file every eighth pixel of every eighth row comes first; a third of the others is missing.
        for (std::uint32_t y = 0; y < (suffix[1] == 'p' ? 144U : 88U); y += 8)
            for (std::uint32_t x = 0; x < 600; x += 24)
                ASSERT_EQ(kept->GetPlane(0).GetRow(y)[x], noise->GetPlane(0).GetRow(y)[x]) << suffix << " " << y;
    }
    g_object_unref(image);
}

} // namespace
} // namespace Velnor::Proc::Testing
