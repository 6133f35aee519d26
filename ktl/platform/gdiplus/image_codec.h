#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "ktl/platform/gdiplus/codecs.h"
#include "ktl/platform/gdiplus/picture.h"

/// \file
/// Private to the drawing layer: files in memory to pictures and back, through GDAL's drivers.

namespace ktl::raster {

/// One image format: a row of the table that lists, finds, reads and writes formats.
struct CodecFacts {
    /// The number that tells the class id of this format from those of the others.
    BYTE classNumber;
    GUID format;
    const wchar_t *name;
    const wchar_t *description;
    const wchar_t *extensions;
    const wchar_t *mime;
    /// The GDAL driver; null for a format that is neither read nor written.
    const char *driver;
    bool hasEncoder;
    /// How a file begins: pattern and mask, alike in length, of each of the signatures one after the other.
    DWORD signatureCount;
    std::string_view signatures;
    std::string_view masks;

    CLSID ClassId() const;
    bool Matches(std::string_view bytes) const;
};

/// All formats, in the order of the decoders; in that of the encoders they come without the gaps.
std::span<const CodecFacts> AllCodecs();
/// Null when there is no such encoder.
const CodecFacts *FindEncoder(const CLSID &classId);

/// What a caller may set for a writer.
struct EncodeSettings {
    int jpegQuality = 75;
    bool tiffLzw = true;
};
/// InvalidParameter for a value outside its range. Unknown parameters, and those of an unexpected type, are passed
/// over.
Gdiplus::Status ReadSettings(const Gdiplus::EncoderParameters *parameters, EncodeSettings &settings);

/// The picture of a whole file in memory: UnknownImageFormat for bytes that no driver reads to the end, NotImplemented
/// for metafiles and icons, OutOfMemory for a size beyond the limits or one that the file can't hold.
Gdiplus::Status DecodeImage(std::string_view bytes, std::unique_ptr<Picture> &picture);

/// The whole file. GenericError when the driver fails.
Gdiplus::Status EncodeImage(const Picture &picture, const CodecFacts &codec, const EncodeSettings &settings,
                            std::string &bytes);

}  // namespace ktl::raster
