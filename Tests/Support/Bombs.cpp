#include "Tests/Support/Bombs.h"

#include <vips/vips.h>
#include <zlib.h>

#include <cstdint>
#include <initializer_list>

namespace Velnor::Proc::Testing {
namespace {

std::string Big(std::uint64_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift);
    return text;
}

std::string Little(std::uint64_t value, int bytes) {
    std::string const text = Big(value, bytes);
    return {text.rbegin(), text.rend()};
}

std::string Repeat(std::string const& text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
}

/// At least so many zeros as zlib packs them, nearly a thousand to a byte: a piece packed once and repeated.
std::string PackZeros(std::uint64_t bytes) {
    constexpr std::size_t PIECE = 1 << 20;
    std::string const zeros(PIECE, '\0');
    std::string piece(PIECE, '\0');
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
    stream.avail_in = PIECE;
    stream.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream.avail_out = PIECE;
    deflate(&stream, Z_FULL_FLUSH);
    piece.resize(PIECE - stream.avail_out);
    deflateEnd(&stream);
    std::uint64_t const pieces = (bytes + PIECE - 1) / PIECE;
    std::string const end("\x03\0", 2);
    return "\x78\xda" + Repeat(piece, pieces) + end + Big(pieces * PIECE % 65521, 2) + Big(1, 2);
}

std::string Png(std::uint32_t width, std::uint32_t height, std::string const& more, std::string const& pixels) {
    return "\x89PNG\r\n\x1a\n" +
           MakePngChunk("IHDR", Big(width, 4) + Big(height, 4) + std::string("\x08\x02\0\0\0", 5)) + more +
           MakePngChunk("IDAT", pixels) + MakePngChunk("IEND", "");
}

std::string Gif(int width, int height) {
    std::string const size = Little(static_cast<unsigned>(width), 2) + Little(static_cast<unsigned>(height), 2);
    return "GIF89a" + size + std::string("\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0", 14) + size +
           std::string("\0\x02\x02\x44\x01\0;", 7);
}

/// All tiles are the same bytes.
std::string TiledTiff(std::uint32_t side, std::uint32_t tileSide) {
    std::string const tile = PackZeros(std::uint64_t{tileSide} * tileSide);
    std::uint32_t const tiles = ((side - 1) / tileSide + 1) * ((side - 1) / tileSide + 1);
    std::uint64_t const offsets = 8 + tile.size();
    std::uint64_t const counts = offsets + 4 * tiles;
    std::string entries;
    auto const add = [&](unsigned tag, std::uint64_t count, std::uint64_t value) {
        entries += Little(tag, 2) + Little(4, 2) + Little(count, 4) + Little(value, 4);
    };
    for (auto const& [tag, value] : std::initializer_list<std::pair<unsigned, std::uint64_t>>{
             {256, side}, {257, side}, {258, 8}, {259, 8}, {262, 1}, {277, 1}, {322, tileSide}, {323, tileSide}})
        add(tag, 1, value);
    add(324, tiles, offsets);
    add(325, tiles, counts);
    return std::string("II*\0", 4) + Little(counts + 4 * tiles, 4) + tile + Repeat(Little(8, 4), tiles) +
           Repeat(Little(tile.size(), 4), tiles) + Little(10, 2) + entries + std::string(4, '\0');
}

/// Bits from the lowest on, as WebP and JPEG XL have them.
class Bits {
public:
    Bits& Put(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i, ++length) {
            if (length % 8 == 0) bytes += '\0';
            bytes.back() = static_cast<char>(bytes.back() | static_cast<char>((value >> i & 1U) << length % 8));
        }
        return *this;
    }
    std::string bytes;

private:
    int length = 0;
};

/// Of one colour: five codes of a single symbol each, which take no bit a pixel.
std::string FlatWebp() {
    Bits bits;
    bits.Put(0x2f, 8).Put(16382, 14).Put(16382, 14).Put(0, 4).Put(0, 1).Put(0, 1).Put(0, 1);
    for (int i = 0; i < 5; ++i) bits.Put(1, 1).Put(0, 3);
    std::string const data = bits.bytes + std::string(8 + bits.bytes.size() % 2, '\0');
    std::string const body = "WEBPVP8L" + Little(data.size(), 4) + data;
    return "RIFF" + Little(body.size(), 4) + body;
}

std::string Box(std::string const& type, std::string const& content) {
    return Big(content.size() + 8, 4) + type + content;
}

/// A grid of 256 x 256 tiles that are all the same item.
std::string HeicGrid() {
    constexpr unsigned SIDE = 16384;
    auto const full = [](std::string const& type, unsigned version, std::string const& content) {
        return Box(type, Big(version << 24, 4) + content);
    };
    auto const item = [&](unsigned id, std::string const& type) {
        return full("infe", 2, Big(id, 2) + Big(0, 2) + type + std::string(1, '\0'));
    };
    auto const size = [&](unsigned side) { return full("ispe", 0, Big(side, 4) + Big(side, 4)); };
    std::string const grid = Big(0, 2) + "\xff\xff" + Big(SIDE, 2) + Big(SIDE, 2);
    std::string const tile(64, '\0');
    std::string const decoder = Box("hvcC", "\x01\x01" + std::string(20, '\0') + std::string(1, '\0'));
    std::string const data = Box("idat", grid + tile);
    std::string references;
    for (int i = 0; i < 256 * 256 - 1; ++i) references += Big(2, 2);
    std::string const properties = Box("ipco", size(SIDE) + size(64) + decoder) +
                                   full("ipma", 0, Big(2, 4) + Big(1, 2) + "\x01\x01" + Big(2, 2) + "\x02\x02\x83");
    auto const place = [](unsigned id, unsigned at, std::size_t bytes) {
        return Big(id, 2) + Big(1, 2) + Big(0, 2) + Big(1, 2) + Big(at, 4) + Big(bytes, 4);
    };
    std::string const meta = full("hdlr", 0, Big(0, 4) + "pict" + std::string(13, '\0')) + full("pitm", 0, Big(1, 2)) +
                             full("iinf", 0, Big(2, 2) + item(1, "grid") + item(2, "hvc1")) + Box("iprp", properties) +
                             full("iref", 0, Box("dimg", Big(1, 2) + Big(256 * 256 - 1, 2) + references)) +
                             full("iloc", 1,
                                  Big(0x4400, 2) + Big(2, 2) + place(1, 0, grid.size()) +
                                      place(2, static_cast<unsigned>(grid.size()), tile.size())) +
                             data;
    return Box("ftyp", "heic" + Big(0, 4) + "mif1heic") + full("meta", 0, meta);
}

/// A flat picture as the file library writes it.
std::string Encode(char const* suffix, int side) {
    VipsImage* image = nullptr;
    void* data = nullptr;
    std::size_t bytes = 0;
    vips_black(&image, side, side, "bands", 3, nullptr);
    bool const isDone = vips_image_write_to_buffer(image, suffix, &data, &bytes, nullptr) == 0;
    std::string file(static_cast<char const*>(data), isDone ? bytes : 0);
    g_free(data);
    g_object_unref(image);
    return file;
}

/// Another size in an AVIF file: in the property of its item, which is what readers go by.
std::string HugeAvif() {
    std::string file = Encode(".avif", 64);
    std::size_t const at = file.find("ispe");
    return at == std::string::npos
               ? ""
               : file.replace(at + 8, 8, Big(22000, 4) + Big(22000, 4)); // Over a limit of the decoder itself.
}

/// Another size in a JPEG file, in its frame header.
std::string HugeJpeg() {
    std::string file = Encode(".jpg", 64);
    std::size_t const at = file.find(std::string("\xff\xc0\0\x11", 4));
    return at == std::string::npos ? "" : file.replace(at + 5, 4, Big(22000, 2) + Big(22000, 2));
}

/// Another size in a JPEG XL file, in whose header the sizes take as many bits as they need: a square side of 100 takes
/// 15 bits, 60000 x 8192 takes 39, so that what follows moves by whole bytes.
std::string HugeJxl() {
    std::string const file = Encode(".jxl", 100);
    if (file.size() < 4) return {};
    Bits bits;
    bits.Put(0, 1).Put(1, 2).Put(8192 - 1, 13).Put(0, 3).Put(2, 2).Put(60000 - 1, 18);
    bits.Put(static_cast<unsigned char>(file[3]) >> 7U, 1);
    return file.substr(0, 2) + bits.bytes + file.substr(4);
}

} // namespace

std::string MakePngChunk(std::string const& type, std::string const& data) {
    std::string const body = type + data;
    return Big(data.size(), 4) + body +
           Big(crc32(0, reinterpret_cast<Bytef const*>(body.data()), static_cast<uInt>(body.size())), 4);
}

std::vector<Bomb> MakeBombs() {
    using namespace std::string_literals;
    std::string const text = PackZeros(7 << 20);
    std::string const packedText = MakePngChunk("zTXt", "a\0\0"s + text);
    std::string const packedUnicode = MakePngChunk("iTXt", "a\0\1\0\0\0"s + text);
    return {{"zeros.png", Png(22000, 22000, "", PackZeros(std::uint64_t{22000} * 66001))},
            {"profile.png", Png(3, 3, MakePngChunk("iCCP", "a\0\0"s + PackZeros(1 << 30)), "")},
            {"texts.png", Png(3, 3, Repeat(packedText, 500), "")},
            {"unicode.png", Png(3, 3, Repeat(packedUnicode, 500), "")},
            {"frame.gif", Gif(22000, 22000)},
            {"tiles.tif", TiledTiff(22000, 512)},
            {"flat.webp", FlatWebp()},
            {"grid.heic", HeicGrid()},
            {"huge.avif", HugeAvif()},
            {"huge.jxl", HugeJxl()},
            {"huge.jpg", HugeJpeg()},
            {"huge.pnm", "P6 22000 22000 255\n"s + std::string(1000, '\0')}};
}

} // namespace Velnor::Proc::Testing
