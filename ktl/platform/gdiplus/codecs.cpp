#include "ktl/platform/gdiplus/codecs.h"

#include <algorithm>
#include <vector>

#include "ktl/platform/gdiplus/image_codec.h"
#include "ktl/platform/gdiplus/startup.h"

namespace Gdiplus {

namespace {

/// The formats' identifiers differ in the first number only.
constexpr GUID FormatId(std::uint32_t first) {
    return {first, 0x0728, 0x11D3, {0x9D, 0x7B, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

}  // namespace

constexpr GUID ImageFormatMemoryBMP = FormatId(0xB96B3CAA);
constexpr GUID ImageFormatBMP = FormatId(0xB96B3CAB);
constexpr GUID ImageFormatEMF = FormatId(0xB96B3CAC);
constexpr GUID ImageFormatWMF = FormatId(0xB96B3CAD);
constexpr GUID ImageFormatJPEG = FormatId(0xB96B3CAE);
constexpr GUID ImageFormatPNG = FormatId(0xB96B3CAF);
constexpr GUID ImageFormatGIF = FormatId(0xB96B3CB0);
constexpr GUID ImageFormatTIFF = FormatId(0xB96B3CB1);
constexpr GUID ImageFormatIcon = FormatId(0xB96B3CB5);

constexpr GUID EncoderQuality = {0x1D5BE4B5, 0xFA4A, 0x452D, {0x9C, 0xDD, 0x5D, 0xB3, 0x51, 0x05, 0xE7, 0xEB}};
constexpr GUID EncoderCompression = {0xE09D739D, 0xCCD4, 0x44EE, {0x8E, 0xBA, 0x3F, 0xBF, 0x8B, 0xE4, 0xFC, 0x58}};

}  // namespace Gdiplus

namespace ktl::raster {

namespace {

using namespace std::string_view_literals;
using namespace Gdiplus;

// In the order of the decoders: bmp, jpeg, gif, emf, wmf, tiff, png, ico.
constexpr CodecFacts kCodecs[] = {
    {0, ImageFormatBMP, L"Built-in BMP Codec", L"BMP", L"*.BMP;*.DIB;*.RLE", L"image/bmp", "BMP", true, 1, "BM"sv,
     "\xFF\xFF"sv},
    {1, ImageFormatJPEG, L"Built-in JPEG Codec", L"JPEG", L"*.JPG;*.JPEG;*.JPE;*.JFIF", L"image/jpeg", "JPEG", true, 1,
     "\xFF\xD8"sv, "\xFF\xFF"sv},
    {2, ImageFormatGIF, L"Built-in GIF Codec", L"GIF", L"*.GIF", L"image/gif", "GIF", true, 2, "GIF89aGIF87a"sv,
     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv},
    {3, ImageFormatEMF, L"Built-in EMF Codec", L"EMF", L"*.EMF", L"image/x-emf", nullptr, false, 1, "\1\0\0\0"sv,
     "\xFF\xFF\xFF\xFF"sv},
    {4, ImageFormatWMF, L"Built-in WMF Codec", L"WMF", L"*.WMF", L"image/x-wmf", nullptr, false, 1,
     "\xD7\xCD\xC6\x9A"sv, "\xFF\xFF\xFF\xFF"sv},
    {5, ImageFormatTIFF, L"Built-in TIFF Codec", L"TIFF", L"*.TIF;*.TIFF", L"image/tiff", "GTiff", true, 2,
     "II*\0MM\0*"sv, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv},
    {6, ImageFormatPNG, L"Built-in PNG Codec", L"PNG", L"*.PNG", L"image/png", "PNG", true, 1, "\x89PNG\r\n\x1A\n"sv,
     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv},
    {7, ImageFormatIcon, L"Built-in ICO Codec", L"ICO", L"*.ICO", L"image/x-icon", nullptr, false, 1, "\0\0\1\0"sv,
     "\xFF\xFF\xFF\xFF"sv},
};

}  // namespace

CLSID CodecFacts::ClassId() const {
    return {0x557CF400U + classNumber, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
}

bool CodecFacts::Matches(std::string_view bytes) const {
    const std::size_t length = signatures.size() / signatureCount;
    for (std::size_t at = 0; at < signatures.size(); at += length) {
        if (bytes.substr(0, length) == signatures.substr(at, length)) return true;
    }
    return false;
}

std::span<const CodecFacts> AllCodecs() {
    return kCodecs;
}

const CodecFacts *FindEncoder(const CLSID &classId) {
    const auto *found = std::find_if(std::begin(kCodecs), std::end(kCodecs), [&](const CodecFacts &codec) {
        return codec.hasEncoder && codec.ClassId() == classId;
    });
    return found == std::end(kCodecs) ? nullptr : found;
}

Status ReadSettings(const EncoderParameters *parameters, EncodeSettings &settings) {
    if (!parameters) return Ok;
    for (UINT i = 0; i < parameters->Count; ++i) {
        const EncoderParameter &one = parameters->Parameter[i];
        if (one.Type != EncoderParameterValueTypeLong || one.NumberOfValues < 1) continue;
        if (!one.Value) return InvalidParameter;
        const auto value = *static_cast<const LONG *>(one.Value);
        if (one.Guid == EncoderQuality) {
            if (value < 0 || value > 100) return InvalidParameter;
            settings.jpegQuality = value;
        } else if (one.Guid == EncoderCompression) {
            if (value != EncoderValueCompressionLZW && value != EncoderValueCompressionNone) return InvalidParameter;
            settings.tiffLzw = value == EncoderValueCompressionLZW;
        }
    }
    return Ok;
}

}  // namespace ktl::raster

namespace Gdiplus {

namespace {

using ktl::raster::CodecFacts;

ImageCodecInfo InfoOf(const CodecFacts &codec) {
    ImageCodecInfo info{};
    info.Clsid = codec.ClassId();
    info.FormatID = codec.format;
    info.CodecName = codec.name;
    info.FormatDescription = codec.description;
    info.FilenameExtension = codec.extensions;
    info.MimeType = codec.mime;
    info.Flags =
        ImageCodecFlagsDecoder | ImageCodecFlagsBuiltin |
        (codec.hasEncoder ? static_cast<DWORD>(ImageCodecFlagsEncoder) : 0U) |
        (codec.driver || codec.format == ImageFormatIcon ? ImageCodecFlagsSupportBitmap : ImageCodecFlagsSupportVector);
    info.Version = 1;
    info.SigCount = codec.signatureCount;
    info.SigSize = static_cast<DWORD>(codec.signatures.size()) / codec.signatureCount;
    info.SigPattern = reinterpret_cast<const BYTE *>(codec.signatures.data());
    info.SigMask = reinterpret_cast<const BYTE *>(codec.masks.data());
    return info;
}

/// The list of all codecs, or of those that write.
std::vector<ImageCodecInfo> ListCodecs(bool encoders) {
    std::vector<ImageCodecInfo> list;
    for (const CodecFacts &codec : ktl::raster::AllCodecs()) {
        if (!encoders || codec.hasEncoder) list.push_back(InfoOf(codec));
    }
    return list;
}

Status TellSize(bool encoders, UINT *count, UINT *size) {
    if (!count || !size) return InvalidParameter;
    *count = 0;
    *size = 0;
    if (!ktl::raster::DrawingStarted()) return GdiplusNotInitialized;
    *count = static_cast<UINT>(ListCodecs(encoders).size());
    *size = static_cast<UINT>(*count * sizeof(ImageCodecInfo));
    return Ok;
}

Status CopyList(bool encoders, UINT count, UINT size, ImageCodecInfo *infos) {
    if (!ktl::raster::DrawingStarted()) return GdiplusNotInitialized;
    const std::vector<ImageCodecInfo> list = ListCodecs(encoders);
    if (!infos || count != list.size() || size != list.size() * sizeof(ImageCodecInfo)) return GenericError;
    std::copy(list.begin(), list.end(), infos);
    return Ok;
}

}  // namespace

Status GetImageEncodersSize(UINT *count, UINT *size) {
    return TellSize(true, count, size);
}

Status GetImageDecodersSize(UINT *count, UINT *size) {
    return TellSize(false, count, size);
}

Status GetImageEncoders(UINT count, UINT size, ImageCodecInfo *encoders) {
    return CopyList(true, count, size, encoders);
}

Status GetImageDecoders(UINT count, UINT size, ImageCodecInfo *decoders) {
    return CopyList(false, count, size, decoders);
}

}  // namespace Gdiplus
