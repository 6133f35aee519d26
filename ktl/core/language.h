#pragma once

namespace ktl {

/// The language of the messages and of the text summaries beside exported images. It is fixed when the library is
/// built: define KTL_CHINESE_BUILD for the Chinese one. Log entries are Chinese in both.
enum class Language { English, Chinese };

#ifdef KTL_CHINESE_BUILD
constexpr Language kBuildLanguage = Language::Chinese;
#else
constexpr Language kBuildLanguage = Language::English;
#endif

}  // namespace ktl
