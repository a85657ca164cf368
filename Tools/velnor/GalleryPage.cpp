#include "Tools/velnor/GalleryPage.h"

#include <cstddef>
#include <string_view>

namespace Velnor::Tool {
namespace {

constexpr std::string_view HEAD = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="generator" content="velnor">
<style>
body { font: 15px/1.4 system-ui, sans-serif; margin: 0 auto; max-width: 1320px; padding: 1rem; color: #222;
       background: #f4f3f1; }
h2 { margin: 2.5rem 0 .5rem; border-bottom: 1px solid #bbb; }
h3 { margin: 1.2rem 0 .2rem; font-size: 1rem; }
p { margin: .1rem 0 .5rem; color: #555; }
.row { display: flex; flex-wrap: wrap; gap: 1rem; }
figure { margin: 0; width: 400px; max-width: 100%; }
figure img { display: block; max-width: 100%; background: #808080; }
figcaption { display: flex; align-items: center; gap: .5rem; padding: .3rem 0; }
code { flex: 1; font-size: 12px; overflow-wrap: anywhere; }
button { font: inherit; font-size: 12px; cursor: pointer; }
.error { padding: 1rem; background: #e6e2dc; color: #703020; }
</style>
)";

constexpr std::string_view SCRIPT = R"(<script>
document.addEventListener('click', event => {
  const button = event.target.closest('button');
  if (!button) return;
  const text = button.parentElement.querySelector('code').textContent;
  const done = () => { button.textContent = 'copied'; setTimeout(() => { button.textContent = 'copy'; }, 1500); };
  const byHand = () => {
    const area = document.createElement('textarea');
    area.value = text;
    document.body.append(area);
    area.select();
    document.execCommand('copy');
    area.remove();
    done();
  };
  if (navigator.clipboard) navigator.clipboard.writeText(text).then(done, byHand); else byHand();
});
</script>
)";

std::string Escape(std::string_view text) {
    std::string escaped;
    for (char const c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

/// Base 64 (RFC 4648).
std::string Encode(std::string_view bytes) {
    constexpr std::string_view DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string encoded;
    encoded.reserve(bytes.size() / 3 * 4 + 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        auto const byte = [&](std::size_t at) {
            return at < bytes.size() ? static_cast<unsigned int>(static_cast<unsigned char>(bytes[at])) : 0U;
        };
        unsigned int const word = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
        for (std::size_t k = 0; k < 4; ++k) encoded += i + k > bytes.size() ? '=' : DIGITS[word >> (18 - 6 * k) & 63];
    }
    return encoded;
}

std::string FormatPicture(std::string const& jpeg, std::string const& name) {
    return "<img loading=\"lazy\" alt=\"" + Escape(name) + "\" src=\"data:image/jpeg;base64," + Encode(jpeg) + "\">\n";
}

std::string FormatTile(GalleryTile const& tile, std::string const& name) {
    std::string const shown = tile.error.empty() ? FormatPicture(tile.jpeg, name + " " + tile.label)
                                                 : "<div class=\"error\">" + Escape(tile.error) + "</div>\n";
    return "<figure>\n" + shown + "<figcaption><code>" + Escape(tile.command) +
           "</code><button type=\"button\">copy</button></figcaption>\n</figure>\n";
}

std::string FormatEntryOfGallery(GalleryEntry const& entry) {
    std::string text = "<h3 id=\"" + Escape(entry.name) + "\">" + Escape(entry.name) + "</h3>\n<p>" +
                       Escape(entry.summary) + "</p>\n<div class=\"row\">\n";
    for (GalleryTile const& tile : entry.tiles) text += FormatTile(tile, entry.name);
    return text + "</div>\n";
}

} // namespace

std::string FormatGallery(std::string const& title, std::string const& original,
                          std::vector<GallerySection> const& sections) {
    std::string page = std::string(HEAD) + "<title>" + Escape(title) + "</title>\n</head>\n<body>\n<h1>" +
                       Escape(title) + "</h1>\n" + FormatPicture(original, "the photograph");
    for (GallerySection const& section : sections) {
        page += "<h2>" + Escape(section.title) + "</h2>\n";
        for (GalleryEntry const& entry : section.entries) page += FormatEntryOfGallery(entry);
    }
    return page + std::string(SCRIPT) + "</body>\n</html>\n";
}

} // namespace Velnor::Tool
