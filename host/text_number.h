#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ktl::host {

/// The number that the whole text is, whatever the locale; empty for anything else, such as trailing characters or a
/// value out of range. A double may come out infinite or not a number ("inf", "nan"): the caller says what it takes.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// The numbers between separators; empty when one of them is none.
template <class Number>
std::optional<std::vector<Number>> ParseNumbers(std::string_view text, char separator) {
    std::vector<Number> numbers;
    for (;;) {
        const auto cut = text.find(separator);
        const auto number = ParseNumber<Number>(text.substr(0, cut));
        if (!number) return std::nullopt;
        numbers.push_back(*number);
        if (cut == std::string_view::npos) return numbers;
        text.remove_prefix(cut + 1);
    }
}

/// ASCII letters in lower case.
inline std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char &c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

}  // namespace ktl::host
