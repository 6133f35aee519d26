#pragma once

#include <memory>
#include <string>
#include <string_view>

/// \file
/// Private to the text classes: families as fontconfig knows them.

namespace ktl::raster {

/// A family: what it is called, which faces are painted, and its design values.
struct Typeface {
    std::wstring name;
    /// Families in the order in which they are tried, as Pango takes them (UTF-8, commas).
    std::string faces;
    int emHeight = 2048;
    int ascent = 0;
    int descent = 0;
    int lineSpacing = 0;

    /// Of a text whose em has `em` pixels.
    double Ascent(double em) const { return em * ascent / emHeight; }
    double LineSpacing(double em) const { return em * lineSpacing / emHeight; }
};

/// The families that stand in for others.
constexpr wchar_t kGenericSansSerif[] = L"Microsoft Sans Serif";
constexpr wchar_t kGenericSerif[] = L"Times New Roman";
constexpr wchar_t kGenericMonospace[] = L"Courier New";

/// The family of that name whatever its case; null when it is neither installed nor one that always has a stand-in.
/// Thread-safe. Answers are kept for the life of the process.
std::shared_ptr<const Typeface> FindTypeface(std::wstring_view name);

}  // namespace ktl::raster
