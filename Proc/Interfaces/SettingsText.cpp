#include "Proc/Interfaces/SettingsText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Velnor::Proc {
namespace Details {
namespace {

template <class Real>
std::string Shortest(Real value) {
    char buffer[32];
    auto const [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return error == std::errc() ? std::string(buffer, end) : std::string();
}

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

template <class Real>
Real ReadNumber(std::string_view text) {
    Real value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        ThrowText(Quoted(text) + " is no number");
    return value;
}

} // namespace

void ThrowText(std::string const& description) { VELNOR_THROW(SettingsTextException, description); }

void ThrowChoice(std::string_view text, std::vector<std::string> const& choices) {
    std::string list;
    for (std::size_t i = 0; i < choices.size(); ++i) list += (i == 0 ? "" : ", ") + choices[i];
    ThrowText(Quoted(text) + " is none of " + list);
}

float ParseFloat(std::string_view text) { return ReadNumber<float>(text); }
double ParseNumber(std::string_view text) { return ReadNumber<double>(text); }

std::int64_t ParseInteger(std::string_view text, std::int64_t low, std::int64_t high) {
    std::int64_t value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
        ThrowText(Quoted(text) + " is no whole number");
    if (error == std::errc::result_out_of_range || value < low || value > high)
        ThrowText(std::string(text) + " is outside the range " + std::to_string(low) + " to " + std::to_string(high));
    return value;
}

void CheckRange(std::string_view text, Range const& range) {
    double const value = ParseNumber(text);
    if (value >= range.low && value <= range.high) return;
    ThrowText(std::string(text) + " is outside the range " + PrintNumber(range.low) + " to " + PrintNumber(range.high));
}

std::string JoinWords(std::vector<std::string> const& words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i)
        list += (i == 0 ? "" : i + 1 < words.size() ? ", " : " and ") + words[i];
    return list;
}

std::string DescribeAccepted(Accepts const& accepts, bool isInteger) {
    bool const isOpen = accepts.high == std::numeric_limits<double>::max();
    if (!isOpen) return PrintNumber(accepts.low) + " to " + PrintNumber(accepts.high);
    if (accepts.low == std::numeric_limits<double>::lowest())
        return accepts.takesZero ? "finite numbers" : "finite numbers but 0";
    return isInteger ? PrintNumber(accepts.low) + " or more"
                     : "finite numbers from " + PrintNumber(accepts.low) + " on";
}

std::string DescribeRefusal(std::string const& name, std::string const& value, std::string_view unit,
                            std::string const& accepted) {
    std::string const measured = unit.empty() ? value : value + " " + std::string(unit);
    return "The setting " + name + " is " + measured + "; " + accepted + " are accepted.";
}

std::string PrintNumber(float value) { return Shortest(value); }
std::string PrintNumber(double value) { return Shortest(value); }

std::vector<std::string_view> SplitList(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    if (text.empty()) return parts;
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

} // namespace Details

using Details::ParseInteger;
using Details::Quoted;
using Details::ThrowText;

std::string SettingsField::GetAcceptedText() const {
    if (!accepts || (range && range->low == accepts->low && range->high == accepts->high)) return "";
    if (type == TextForm<FrameFormat>::TYPE) return Details::DescribeAccepted(*accepts, true) + " a side";
    return Details::DescribeAccepted(*accepts, type == TextForm<int>::TYPE);
}

bool TextForm<bool>::Parse(std::string_view text) {
    for (std::string_view yes : {"true", "yes", "on", "1"})
        if (text == yes) return true;
    for (std::string_view no : {"false", "no", "off", "0"})
        if (text == no) return false;
    Details::ThrowChoice(text, Choices());
}

PixFmt TextForm<PixFmt>::Parse(std::string_view text) {
    if (text == "none") return PixFmt::NONE;
    PixFmtDescription const* const description = PixFmtDescription::Find(text);
    if (description == nullptr) ThrowText(Quoted(text) + " is no pixel format such as rgb24, bgra or yuv420p");
    return description->format;
}

std::string TextForm<PixFmt>::Print(PixFmt value) {
    PixFmtDescription const* const description = PixFmtDescription::Find(value);
    return description != nullptr ? std::string(description->name) : "none";
}

FrameFormat TextForm<FrameFormat>::Parse(std::string_view text) {
    auto const parts = Details::SplitList(text, 'x');
    auto const word = [](std::string_view digits, std::int64_t low) {
        return static_cast<std::uint32_t>(ParseInteger(digits, low, LARGEST_PICTURE_SIDE));
    };
    if (parts.size() != 2 && parts.size() != 3) ThrowText(Quoted(text) + " is no size such as 640x480");
    FrameFormat frame = FrameFormat::Square(word(parts[0], 0), word(parts[1], 0));
    if (text == "0x0") return {};
    if (parts.size() == 3) {
        auto const aspect = Details::SplitList(parts[2], ':');
        if (aspect.size() != 2) ThrowText(Quoted(parts[2]) + " is no pixel aspect such as 1:1");
        frame.aspectNumerator = word(aspect[0], 1);
        frame.aspectDenominator = word(aspect[1], 1);
    }
    return frame;
}

std::string TextForm<FrameFormat>::Print(FrameFormat const& value) {
    std::string text = std::to_string(value.width) + "x" + std::to_string(value.height);
    bool const isPlain = value == FrameFormat() || (value.aspectNumerator == 1 && value.aspectDenominator == 1);
    if (!isPlain || value == FrameFormat::Square(0, 0))
        text += "x" + std::to_string(value.aspectNumerator) + ":" + std::to_string(value.aspectDenominator);
    return text;
}

CropInfo TextForm<CropInfo>::Parse(std::string_view text) {
    auto const parts = Details::SplitList(text, ',');
    if (parts.size() != 4) ThrowText(Quoted(text) + " is no left,top,right,bottom such as 8,0,8,0");
    auto const margin = [&](std::size_t i) {
        return static_cast<unsigned int>(ParseInteger(parts[i], 0, LARGEST_PICTURE_SIDE));
    };
    return {margin(0), margin(1), margin(2), margin(3)};
}

std::string TextForm<CropInfo>::Print(CropInfo const& value) {
    return std::to_string(value.GetLeft()) + "," + std::to_string(value.GetTop()) + "," +
           std::to_string(value.GetRight()) + "," + std::to_string(value.GetBottom());
}

} // namespace Velnor::Proc
