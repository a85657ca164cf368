#pragma once

#include "Proc/Host/PictureFile.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Refusal.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <vips/vips.h>

namespace Velnor::Proc::Testing {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

/// Picture files in a folder of their own, written by the file library itself where a test wants them crafted.
class PictureFileTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(VIPS_INIT("test"), 0); }

    fs::path In(std::string const& name) const { return folder / name; }
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
        return RefusalOf<FileInputException>([&] { Read(name, options); });
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

inline std::string GetBlob(VipsImage* image, char const* name) {
    void const* data = nullptr;
    std::size_t bytes = 0;
    if (vips_image_get_typeof(image, name) == 0 || vips_image_get_blob(image, name, &data, &bytes) != 0) return {};
    return {static_cast<char const*>(data), bytes};
}

/// One of the file library's own profiles.
inline std::string LoadProfile(char const* name) {
    VipsBlob* blob = nullptr;
    EXPECT_EQ(vips_profile_load(name, &blob, nullptr), 0);
    std::size_t bytes = 0;
    auto const* const data = static_cast<char const*>(vips_blob_get(blob, &bytes));
    std::string profile(data, bytes);
    vips_area_unref(VIPS_AREA(blob));
    return profile;
}

} // namespace Velnor::Proc::Testing
