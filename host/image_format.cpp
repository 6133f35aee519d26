#include "host/image_format.h"

#include <filesystem>

#include "host/text_number.h"

namespace ktl::host {

namespace {

struct NamedFormat {
    std::string_view extension;
    ImageFormat format;
};

constexpr NamedFormat kFormats[] = {
    {".png", {"png", ".pgw"}},   {".jpg", {"jpeg", ".jgw"}}, {".jpeg", {"jpeg", ".jgw"}}, {".tif", {"tiff", ".tfw"}},
    {".tiff", {"tiff", ".tfw"}}, {".gif", {"gif", ".gfw"}},  {".bmp", {"bmp", ".bpw"}},
};

}  // namespace

std::optional<ImageFormat> FormatOf(const std::string &path) {
    const std::string extension = LowerAscii(std::filesystem::path(path).extension().string());
    for (const NamedFormat &named : kFormats) {
        if (named.extension == extension) return named.format;
    }
    return std::nullopt;
}

std::string KnownExtensions() {
    std::string list;
    for (const NamedFormat &named : kFormats) list += (list.empty() ? "" : ", ") + std::string(named.extension);
    return list;
}

std::string WithExtension(const std::string &path, std::string_view extension) {
    return std::filesystem::path(path).replace_extension(extension).string();
}

}  // namespace ktl::host
