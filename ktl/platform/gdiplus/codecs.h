#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

/// \file
/// The image formats: which there are, and the parameters that a caller can give a writer.
///
/// Written and read are BMP, JPEG, GIF, TIFF and PNG. Metafiles and icons stand among the decoders, as on the platform,
/// but loading one gives NotImplemented.

namespace Gdiplus {

/// Formats as `Image::GetRawFormat` tells them.
KTL_API extern const GUID ImageFormatMemoryBMP;
KTL_API extern const GUID ImageFormatBMP;
KTL_API extern const GUID ImageFormatEMF;
KTL_API extern const GUID ImageFormatWMF;
KTL_API extern const GUID ImageFormatJPEG;
KTL_API extern const GUID ImageFormatPNG;
KTL_API extern const GUID ImageFormatGIF;
KTL_API extern const GUID ImageFormatTIFF;
KTL_API extern const GUID ImageFormatIcon;

/// JPEG: a Long from 0 to 100, 75 without it.
KTL_API extern const GUID EncoderQuality;
/// TIFF: a Long of EncoderValue, LZW without it.
KTL_API extern const GUID EncoderCompression;

/// What the values of a setting are; a Long has 32 bits.
enum EncoderParameterValueType {
    EncoderParameterValueTypeByte = 1,
    EncoderParameterValueTypeASCII = 2,
    EncoderParameterValueTypeShort = 3,
    EncoderParameterValueTypeLong = 4,
};

/// Values of `EncoderCompression`.
enum EncoderValue {
    EncoderValueCompressionLZW = 2,
    EncoderValueCompressionNone = 6,
};

/// One setting for a writer. `Value` points to `NumberOfValues` values of the kind `Type`; the caller keeps them.
struct EncoderParameter {
    GUID Guid;
    ULONG NumberOfValues = 0;
    ULONG Type = 0;
    void *Value = nullptr;
};

/// `Count` settings; a caller who needs more than one allocates room behind the first. Unknown ones have no effect.
struct EncoderParameters {
    UINT Count = 0;
    EncoderParameter Parameter[1];
};

/// Bits of `ImageCodecInfo::Flags`.
enum ImageCodecFlags {
    ImageCodecFlagsEncoder = 0x00000001,
    ImageCodecFlagsDecoder = 0x00000002,
    ImageCodecFlagsSupportBitmap = 0x00000004,
    ImageCodecFlagsSupportVector = 0x00000008,
    ImageCodecFlagsBuiltin = 0x00010000,
};

/// What is told of a format. The texts belong to the library and stay.
struct ImageCodecInfo {
    CLSID Clsid;
    GUID FormatID;
    const WCHAR *CodecName;
    const WCHAR *DllName;
    const WCHAR *FormatDescription;
    const WCHAR *FilenameExtension;
    const WCHAR *MimeType;
    DWORD Flags;
    DWORD Version;
    DWORD SigCount;
    DWORD SigSize;
    const BYTE *SigPattern;
    const BYTE *SigMask;
};

/// The number of formats, and the bytes that their list takes.
KTL_API Status GetImageEncodersSize(UINT *count, UINT *size);
KTL_API Status GetImageDecodersSize(UINT *count, UINT *size);
/// Fills the list: encoders BMP, JPEG, GIF, TIFF, PNG; decoders BMP, JPEG, GIF, EMF, WMF, TIFF, PNG, icon. A count or a
/// size other than the one told gives GenericError.
KTL_API Status GetImageEncoders(UINT count, UINT size, ImageCodecInfo *encoders);
KTL_API Status GetImageDecoders(UINT count, UINT size, ImageCodecInfo *decoders);

}  // namespace Gdiplus
