#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ktl::host {

/// A format that pictures are written in.
struct ImageFormat {
    std::string_view encoder;             ///< the encoder's name after "image/"
    std::string_view worldFileExtension;  ///< of the file that GDAL looks for beside such a picture
};

/// The format that a file name's extension stands for, in any case; empty when it is none of them.
std::optional<ImageFormat> FormatOf(const std::string &path);
/// The extensions, for a message.
std::string KnownExtensions();
/// The path with another extension, or none, in the place of its last one. A dot in a folder's name is no extension.
std::string WithExtension(const std::string &path, std::string_view extension);

}  // namespace ktl::host
