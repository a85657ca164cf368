#include "Proc/Host/Files/PnmFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <string_view>

namespace Velnor::Proc::Files {
namespace {

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

/// The words of a header, between which there are spaces and comments.
class HeaderWords {
public:
    explicit HeaderWords(std::string_view head) : text(head) {}

    std::string_view Take() {
        while (at < text.size() && (IsSpace(text[at]) || text[at] == '#'))
            at = text[at] == '#' ? std::min(text.find('\n', at), text.size()) : at + 1;
        std::size_t const begin = at;
        while (at < text.size() && !IsSpace(text[at]) && text[at] != '#') ++at;
        return text.substr(begin, at - begin);
    }
    std::uint64_t TakeNumber() {
        std::string_view const word = Take();
        std::uint64_t number = 0;
        std::from_chars(word.data(), word.data() + word.size(), number);
        return number;
    }
    /// After the one space that ends the header.
    std::uint64_t GetEnd() const { return at + 1; }

private:
    std::string_view text;
    std::size_t at = 0;
};

/// Counts samples that are text, to no more than are wanted. Of pictures of two levels each digit is one.
std::uint64_t CountSamples(FileBytes const& file, std::uint64_t at, std::uint64_t wanted, bool areDigits) {
    constexpr std::uint64_t PIECE = 1 << 20;
    std::uint64_t count = 0;
    bool isInside = false;
    for (; count < wanted && at < file.GetSize(); at += PIECE)
        for (char const c : file.Read(at, std::min(PIECE, file.GetSize() - at))) {
            bool const isSample = areDigits ? c == '0' || c == '1' : !IsSpace(c);
            count += isSample && (areDigits || !isInside) ? 1 : 0;
            isInside = isSample;
        }
    return std::min(count, wanted);
}

} // namespace

std::optional<PnmExtent> MeasurePnm(FileBytes const& file) {
    constexpr std::uint64_t MOST_HEADER = 4096;
    std::string const head = file.Read(0, std::min(MOST_HEADER, file.GetSize()));
    HeaderWords words(head);
    std::string_view const kind = words.Take();
    std::uint64_t const width = words.TakeNumber();
    std::uint64_t const height = words.TakeNumber();
    constexpr std::uint64_t MOST = UINT32_MAX;
    if (kind.size() != 2 || width == 0 || height == 0 || width > MOST || height > MOST) return {};
    char const letter = kind[1];
    bool const isBits = letter == '1' || letter == '4';
    bool const isFloat = letter == 'F' || letter == 'f';
    std::uint64_t const most = isBits ? 1 : words.TakeNumber(); // PFM has a factor in its place.
    std::uint64_t const samples = width * (letter == '3' || letter == '6' || letter == 'F' ? 3 : 1);
    std::uint64_t const begin = words.GetEnd();
    if (begin > head.size()) return {};
    if (letter >= '1' && letter <= '3')
        return PnmExtent{height, CountSamples(file, begin, samples * height, isBits) / samples, 0};
    std::uint64_t const sampleBytes = isFloat ? 4 : (most > UINT8_MAX ? 2 : 1);
    std::uint64_t const rowBytes = isBits ? (width + 7) / 8 : samples * sampleBytes;
    std::uint64_t const there = file.GetSize() - begin;
    std::uint64_t const whole = std::min(height, there / rowBytes);
    return PnmExtent{height, whole, whole == height ? 0 : rowBytes * height - there};
}

} // namespace Velnor::Proc::Files
