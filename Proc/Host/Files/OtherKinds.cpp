#include "Proc/Host/Files/OtherKinds.h"

#include <algorithm>
#include <array>

namespace Velnor::Proc::Files {
namespace {

struct Signature {
    std::size_t place;
    std::string_view bytes;
    char const* name;
};

using std::string_view_literals::operator""sv;

constexpr std::array SIGNATURES{
    Signature{0, "%PDF"sv, "PDF"},
    Signature{0, "%!PS"sv, "PostScript"},
    Signature{0, "\xC5\xD0\xD3\xC6"sv, "PostScript"},
    Signature{0, "8BPS"sv, "PSD"},
    Signature{0, "gimp xcf"sv, "XCF"},
    Signature{0, "\0\0\1\0"sv, "ICO"},
    Signature{0, "\x76\x2F\x31\x01"sv, "OpenEXR"},
    Signature{0, "#?RADIANCE"sv, "Radiance HDR"},
    Signature{0, "#?RGBE"sv, "Radiance HDR"},
    Signature{0, "SIMPLE  ="sv, "FITS"},
    Signature{0, "AT&TFORM"sv, "DjVu"},
    Signature{0, "\x0A\x05\x01\x08"sv, "PCX"},
    Signature{0, "DDS "sv, "DDS"},
    Signature{0, "qoif"sv, "QOI"},
    Signature{0, "BPG\xFB"sv, "BPG"},
    Signature{0, "P7\n"sv, "PAM"},
    Signature{0, "\0\0\0\x0CjP  "sv, "JPEG 2000"},
    Signature{0, "\xFF\x4F\xFF\x51"sv, "JPEG 2000"},
    Signature{0, "PK\3\4"sv, "ZIP"},
    Signature{0, "Rar!"sv, "RAR"},
    Signature{0, "7z\xBC\xAF\x27\x1C"sv, "7z"},
    Signature{0, "\x1F\x8B"sv, "gzip"},
    Signature{0,
              "\x7F"
              "ELF"sv,
              "program"},
    Signature{0, "\x1A\x45\xDF\xA3"sv, "video"},
    Signature{4, "ftypqt"sv, "video"},
    Signature{4, "ftypisom"sv, "video"},
    Signature{4, "ftypmp4"sv, "video"},
    Signature{4, "ftypM4V"sv, "video"},
    Signature{8, "AVI "sv, "video"},
    Signature{128, "DICM"sv, "DICOM"},
};

} // namespace

std::string NameOtherKind(std::string_view head) {
    auto const found = std::ranges::find_if(SIGNATURES, [head](Signature const& signature) {
        return head.substr(std::min(signature.place, head.size())).starts_with(signature.bytes);
    });
    if (found != SIGNATURES.end()) return found->name;
    // Text, which may begin with anything.
    if (head.find("<svg") != std::string_view::npos) return "SVG";
    if (head.find("<html") != std::string_view::npos || head.find("<!DOCTYPE html") != std::string_view::npos)
        return "HTML";
    return {};
}

} // namespace Velnor::Proc::Files
