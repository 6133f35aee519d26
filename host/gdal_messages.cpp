#include "host/gdal_messages.h"

#include <cpl_conv.h>
#include <cpl_string.h>

#include <algorithm>
#include <memory>

namespace ktl::host {

std::string SoundUtf8(const std::string &text) {
    if (CPLIsUTF8(text.c_str(), -1) != 0) return text;
    const std::unique_ptr<char, decltype(&VSIFree)> sound(CPLForceToASCII(text.c_str(), -1, '?'), VSIFree);
    return sound.get();
}

namespace {

constexpr std::size_t kMostWarnings = 10;

constexpr std::size_t kMostBytes = 300;

// A message may quote a whole text, or half a character of one.
std::string InOneLine(std::string text) {
    for (char &c : text) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) text.pop_back();
    const bool isLong = text.size() > kMostBytes;
    if (isLong) text.resize(kMostBytes);
    while (isLong && !text.empty() && CPLIsUTF8(text.c_str(), -1) == 0 && text.size() + 4 > kMostBytes) text.pop_back();
    return SoundUtf8(text) + (isLong ? "…" : "");
}

}  // namespace

void GdalMessages::Forget() {
    m_failure.clear();
    m_warnings.clear();
}

void CPL_STDCALL GdalMessages::OnMessage(CPLErr kind, CPLErrorNum, const char *text) {
    auto *self = static_cast<GdalMessages *>(CPLGetErrorHandlerUserData());
    std::vector<std::string> &warnings = self->m_warnings;
    if (kind >= CE_Failure && self->m_failure.empty()) self->m_failure = InOneLine(text);
    if (kind != CE_Warning || warnings.size() >= kMostWarnings) return;
    const std::string line = InOneLine(text);
    if (std::find(warnings.begin(), warnings.end(), line) == warnings.end()) warnings.push_back(line);
}

}  // namespace ktl::host
