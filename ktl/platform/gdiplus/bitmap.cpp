#include "ktl/platform/gdiplus/bitmap.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "ktl/platform/filesystem.h"
#include "ktl/platform/gdiplus/image_codec.h"
#include "ktl/platform/gdiplus/picture.h"
#include "ktl/platform/gdiplus/startup.h"
#include "ktl/platform/gdiplus/surface.h"
#include "ktl/platform/gdiplus/wide_text.h"

namespace ktl::raster {

struct ImageAccess {
    static cairo_surface_t *Surface(const Gdiplus::Image &image) {
        return image.m_picture ? image.m_picture->surface.get() : nullptr;
    }
};

cairo_surface_t *SurfaceOf(const Gdiplus::Image &image) {
    return ImageAccess::Surface(image);
}

namespace {

using namespace Gdiplus;
using PicturePtr = std::unique_ptr<Picture>;

/// The system's name for a wide one, whose parts '\' or '/' separate.
std::string SystemName(const WCHAR *name) {
    std::string path = Utf8FromWide(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

Status StatusOf(int error) {
    switch (error) {
        case 0:
            return Ok;
        case ENOENT:
        case ENOTDIR:
            return FileNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
            return AccessDenied;
        case ENOMEM:
            return OutOfMemory;
        default:
            return Win32Error;
    }
}

Status LoadFile(const WCHAR *name, PicturePtr &picture) {
    if (!DrawingStarted()) return GdiplusNotInitialized;
    if (!name) return InvalidParameter;
    std::string content;
    const Status status = StatusOf(ReadWholeFile(ExistingPath(SystemName(name)), content));
    return status == Ok ? DecodeImage(content, picture) : status;
}

Status ReadStream(IStream &stream, std::string &content) {
    constexpr ULONG kPiece = 1 << 16;
    if (FAILED(stream.Seek({}, STREAM_SEEK_SET, nullptr))) return InvalidParameter;
    for (ULONG done = kPiece; done > 0;) {
        const std::size_t size = content.size();
        content.resize(size + kPiece);
        done = 0;
        if (FAILED(stream.Read(content.data() + size, kPiece, &done))) return Win32Error;
        content.resize(size + std::min(done, kPiece));
    }
    return Ok;
}

Status LoadStream(IStream *stream, PicturePtr &picture) {
    if (!DrawingStarted()) return GdiplusNotInitialized;
    if (!stream) return InvalidParameter;
    std::string content;
    const Status status = ReadStream(*stream, content);
    return status == Ok ? DecodeImage(content, picture) : status;
}

Status MakeEmpty(INT width, INT height, PixelFormat format, PicturePtr &picture) {
    if (!DrawingStarted()) return GdiplusNotInitialized;
    const Status status = MakePicture(width, height, format, picture);
    if (status != Ok || !IsIndexedPixelFormat(format)) return status;
    picture->palette = DefaultPalette(format);
    const std::uint32_t first = Premultiply(picture->palette.front());
    for (int y = 0; y < height; ++y) std::fill_n(picture->Row(y), width, first);
    cairo_surface_mark_dirty(picture->surface.get());
    return Ok;
}

/// The formats in which foreign pixels are taken and shown: bytes B, G, R(, A).
bool IsOpenFormat(PixelFormat format) {
    return format == PixelFormat24bppRGB || format == PixelFormat32bppRGB || format == PixelFormat32bppARGB ||
           format == PixelFormat32bppPARGB;
}

void ReadRow(const std::uint32_t *row, bool hasAlpha, PixelFormat format, int width, BYTE *out) {
    const int step = static_cast<int>(GetPixelFormatSize(format) / 8);
    for (int x = 0; x < width; ++x, out += step) {
        const std::uint32_t opaque = hasAlpha ? row[x] : row[x] | 0xFF000000U;
        const std::uint32_t shown = format == PixelFormat32bppPARGB ? opaque : ColorOf(opaque, hasAlpha);
        const std::uint32_t color = format == PixelFormat32bppRGB ? shown | 0xFF000000U : shown;
        std::memcpy(out, &color, static_cast<std::size_t>(step));
    }
}

void WriteRow(const BYTE *in, PixelFormat format, int width, bool hasAlpha, std::uint32_t *row) {
    const int step = static_cast<int>(GetPixelFormatSize(format) / 8);
    for (int x = 0; x < width; ++x, in += step) {
        std::uint32_t color = 0;
        std::memcpy(&color, in, static_cast<std::size_t>(step));
        if (!IsAlphaPixelFormat(format)) color |= 0xFF000000U;
        if (format == PixelFormat32bppPARGB) color = hasAlpha ? color : Unpremultiply(color) | 0xFF000000U;
        row[x] = format == PixelFormat32bppPARGB ? color : PixelOf(color, hasAlpha);
    }
}

bool Contains(const Picture &picture, const Rect &area) {
    return area.X >= 0 && area.Y >= 0 && area.Width > 0 && area.Height > 0 && area.Width <= picture.Width() - area.X &&
           area.Height <= picture.Height() - area.Y;
}

/// A part of a picture in another format. An indexed format keeps its colours and is made from no other.
Status CopyPart(const Picture &source, const Rect &area, PixelFormat format, PicturePtr &copy) {
    if (!DrawingStarted()) return GdiplusNotInitialized;
    if (!Contains(source, area)) return InvalidParameter;
    if (IsIndexedPixelFormat(format) && format != source.format) return InvalidParameter;
    const Status status = MakePicture(area.Width, area.Height, format, copy);
    if (status != Ok) return status;
    cairo_surface_flush(source.surface.get());
    const bool same = copy->HasAlpha() == source.HasAlpha();
    for (int y = 0; y < area.Height; ++y) {
        const std::uint32_t *from = source.Row(area.Y + y) + area.X;
        std::uint32_t *to = copy->Row(y);
        if (same) {
            std::copy_n(from, area.Width, to);
        } else {
            std::transform(from, from + area.Width, to, [&](std::uint32_t pixel) {
                return PixelOf(ColorOf(pixel, source.HasAlpha()), copy->HasAlpha());
            });
        }
    }
    cairo_surface_mark_dirty(copy->surface.get());
    if (IsIndexedPixelFormat(format)) copy->palette = source.palette;
    copy->dpiX = source.dpiX;
    copy->dpiY = source.dpiY;
    return Ok;
}

Rect WholeOf(const Picture &picture) {
    return {0, 0, picture.Width(), picture.Height()};
}

/// A stored pixel over a background: premultiplied, with the alpha byte of the picture.
std::uint32_t OverBackground(std::uint32_t pixel, std::uint32_t background) {
    const std::uint32_t shows = 255 - (pixel >> 24);
    const auto channel = [&](int shift) {
        const std::uint32_t sum = (pixel >> shift & 0xFF) + MultiplyByte(background >> shift & 0xFF, shows);
        return std::min(sum, 255U) << shift;
    };
    return (pixel & 0xFF000000U) | channel(16) | channel(8) | channel(0);
}

Status WriteStream(IStream &stream, const std::string &bytes) {
    constexpr std::size_t kPiece = std::size_t{1} << 30;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        const auto size = static_cast<ULONG>(std::min(kPiece, bytes.size() - at));
        ULONG done = 0;
        if (FAILED(stream.Write(bytes.data() + at, size, &done)) || done != size) return Win32Error;
    }
    return Ok;
}

}  // namespace

}  // namespace ktl::raster

namespace Gdiplus {

using namespace ktl::raster;

Image::Image() = default;
Image::~Image() = default;

Image::Image(const WCHAR *filename, BOOL) {
    PicturePtr picture;
    const Status status = LoadFile(filename, picture);
    Take(status, std::move(picture));
}

Image::Image(IStream *stream, BOOL) {
    PicturePtr picture;
    const Status status = LoadStream(stream, picture);
    Take(status, std::move(picture));
}

Image *Image::FromFile(const WCHAR *filename, BOOL useEmbeddedColorManagement) {
    return DrawingStarted() ? new Image(filename, useEmbeddedColorManagement) : nullptr;
}

Image *Image::FromStream(IStream *stream, BOOL useEmbeddedColorManagement) {
    return DrawingStarted() ? new Image(stream, useEmbeddedColorManagement) : nullptr;
}

void Image::Take(Status status, std::unique_ptr<Picture> picture) {
    m_loadStatus = status;
    if (status == Ok) m_picture = std::move(picture);
}

Image *Image::Clone() const {
    PicturePtr copy;
    if (!m_picture || CopyPart(*m_picture, WholeOf(*m_picture), m_picture->format, copy) != Ok) return nullptr;
    copy->rawFormat = m_picture->rawFormat;
    auto *image = new Image;
    image->Take(Ok, std::move(copy));
    return image;
}

Status Image::Save(const WCHAR *filename, const CLSID *encoder, const EncoderParameters *parameters) {
    if (!filename) return SetResult(InvalidParameter);
    std::string bytes;
    const Status status = Encode(encoder, parameters, bytes);
    if (status != Ok) return SetResult(status);
    return SetResult(StatusOf(ktl::ReplaceWholeFile(ktl::ExistingPath(SystemName(filename)), bytes)));
}

Status Image::Save(IStream *stream, const CLSID *encoder, const EncoderParameters *parameters) {
    if (!stream) return SetResult(InvalidParameter);
    std::string bytes;
    const Status status = Encode(encoder, parameters, bytes);
    return SetResult(status == Ok ? WriteStream(*stream, bytes) : status);
}

Status Image::Encode(const CLSID *encoder, const EncoderParameters *parameters, std::string &bytes) const {
    if (!DrawingStarted()) return GdiplusNotInitialized;
    if (!m_picture || !encoder) return InvalidParameter;
    const CodecFacts *codec = FindEncoder(*encoder);
    if (!codec) return UnknownImageFormat;
    EncodeSettings settings;
    const Status status = ReadSettings(parameters, settings);
    return status == Ok ? EncodeImage(*m_picture, *codec, settings, bytes) : status;
}

ImageType Image::GetType() const {
    return m_picture ? ImageTypeBitmap : ImageTypeUnknown;
}

UINT Image::GetWidth() const {
    return m_picture ? static_cast<UINT>(m_picture->Width()) : 0;
}

UINT Image::GetHeight() const {
    return m_picture ? static_cast<UINT>(m_picture->Height()) : 0;
}

REAL Image::GetHorizontalResolution() const {
    return m_picture ? m_picture->dpiX : 0;
}

REAL Image::GetVerticalResolution() const {
    return m_picture ? m_picture->dpiY : 0;
}

PixelFormat Image::GetPixelFormat() const {
    return m_picture ? m_picture->format : PixelFormatUndefined;
}

Status Image::GetRawFormat(GUID *format) const {
    if (!m_picture || !format) return SetResult(InvalidParameter);
    *format = m_picture->rawFormat;
    return Ok;
}

Status Image::GetLastStatus() const {
    if (m_loadStatus != Ok) return m_loadStatus;
    const Status status = m_lastStatus;
    m_lastStatus = Ok;
    return status;
}

Status Image::SetResult(Status status) const {
    if (status != Ok) m_lastStatus = status;
    return status;
}

/// A block that is shown to the caller.
struct Bitmap::Lock {
    Rect area;
    UINT flags = 0;
    PixelFormat format = PixelFormatUndefined;
    /// Empty when the block is the caller's own.
    std::vector<BYTE> bytes;
};

Bitmap::Bitmap() = default;
Bitmap::~Bitmap() = default;

Bitmap::Bitmap(INT width, INT height, PixelFormat format) {
    PicturePtr picture;
    const Status status = MakeEmpty(width, height, format, picture);
    Take(status, std::move(picture));
}

Bitmap::Bitmap(INT width, INT height, INT stride, PixelFormat format, const BYTE *scan0) {
    PicturePtr picture;
    Status status = scan0 && IsOpenFormat(format) ? MakeEmpty(width, height, format, picture) : InvalidParameter;
    if (status == Ok && std::abs(static_cast<std::int64_t>(stride)) * 8 <
                            static_cast<std::int64_t>(width) * GetPixelFormatSize(format)) {
        status = InvalidParameter;
    }
    for (int y = 0; status == Ok && y < height; ++y) {
        WriteRow(scan0 + static_cast<std::ptrdiff_t>(stride) * y, format, width, picture->HasAlpha(), picture->Row(y));
    }
    Take(status, std::move(picture));
}

Bitmap::Bitmap(const WCHAR *filename, BOOL useEmbeddedColorManagement) : Image(filename, useEmbeddedColorManagement) {}

Bitmap::Bitmap(IStream *stream, BOOL useEmbeddedColorManagement) : Image(stream, useEmbeddedColorManagement) {}

Bitmap *Bitmap::FromFile(const WCHAR *filename, BOOL useEmbeddedColorManagement) {
    return DrawingStarted() ? new Bitmap(filename, useEmbeddedColorManagement) : nullptr;
}

Bitmap *Bitmap::FromStream(IStream *stream, BOOL useEmbeddedColorManagement) {
    return DrawingStarted() ? new Bitmap(stream, useEmbeddedColorManagement) : nullptr;
}

Bitmap *Bitmap::Clone() const {
    if (!m_picture) return nullptr;
    Bitmap *copy = Clone(WholeOf(*m_picture), m_picture->format);
    if (copy) copy->m_picture->rawFormat = m_picture->rawFormat;
    return copy;
}

Bitmap *Bitmap::Clone(INT x, INT y, INT width, INT height, PixelFormat format) const {
    return Clone(Rect(x, y, width, height), format);
}

Bitmap *Bitmap::Clone(const Rect &area, PixelFormat format) const {
    PicturePtr copy;
    const PixelFormat wanted = format == PixelFormatDontCare && m_picture ? m_picture->format : format;
    const Status status = m_picture ? CopyPart(*m_picture, area, wanted, copy) : InvalidParameter;
    if (SetResult(status) != Ok) return nullptr;
    auto *bitmap = new Bitmap;
    bitmap->Take(Ok, std::move(copy));
    return bitmap;
}

Status Bitmap::GetPixel(INT x, INT y, Color *color) const {
    if (!m_picture || !color || !Contains(*m_picture, Rect(x, y, 1, 1))) return SetResult(InvalidParameter);
    if (m_lock) return SetResult(WrongState);
    cairo_surface_flush(m_picture->surface.get());
    color->SetValue(ColorOf(m_picture->Row(y)[x], m_picture->HasAlpha()));
    return Ok;
}

Status Bitmap::SetPixel(INT x, INT y, const Color &color) {
    if (!m_picture || IsIndexedPixelFormat(m_picture->format) || !Contains(*m_picture, Rect(x, y, 1, 1))) {
        return SetResult(InvalidParameter);
    }
    if (m_lock) return SetResult(WrongState);
    cairo_surface_flush(m_picture->surface.get());
    m_picture->Row(y)[x] = PixelOf(color.GetValue(), m_picture->HasAlpha());
    cairo_surface_mark_dirty_rectangle(m_picture->surface.get(), x, y, 1, 1);
    return Ok;
}

Status Bitmap::LockBits(const Rect *area, UINT flags, PixelFormat format, BitmapData *data) {
    if (!m_picture || !data || !IsOpenFormat(format)) return SetResult(InvalidParameter);
    if (m_lock) return SetResult(WrongState);
    const Rect part = area ? *area : WholeOf(*m_picture);
    if (!Contains(*m_picture, part)) return SetResult(InvalidParameter);
    if ((flags & ImageLockModeWrite) && IsIndexedPixelFormat(m_picture->format)) return SetResult(InvalidParameter);
    const bool isForeign = (flags & ImageLockModeUserInputBuf) != 0;
    if (isForeign && !data->Scan0) return SetResult(InvalidParameter);
    try {
        auto lock = std::make_unique<Lock>();
        lock->area = part;
        lock->flags = flags;
        lock->format = format;
        if (!isForeign) {
            data->Stride = (part.Width * static_cast<INT>(GetPixelFormatSize(format)) + 31) / 32 * 4;
            lock->bytes.resize(static_cast<std::size_t>(data->Stride) * static_cast<std::size_t>(part.Height));
            data->Scan0 = lock->bytes.data();
        }
        m_lock = std::move(lock);
    } catch (const std::bad_alloc &) {
        return SetResult(OutOfMemory);
    }
    data->Width = static_cast<UINT>(part.Width);
    data->Height = static_cast<UINT>(part.Height);
    data->Format = format;
    if (flags & ImageLockModeRead) Exchange(*data, false);
    return Ok;
}

Status Bitmap::UnlockBits(BitmapData *data) {
    if (!m_picture || !data) return SetResult(InvalidParameter);
    if (!m_lock) return SetResult(WrongState);
    if (m_lock->flags & ImageLockModeWrite) Exchange(*data, true);
    m_lock.reset();
    return Ok;
}

/// The block's pixels out of the picture, or back in.
void Bitmap::Exchange(const BitmapData &data, bool intoPicture) {
    cairo_surface_flush(m_picture->surface.get());
    const Rect &area = m_lock->area;
    for (int y = 0; y < area.Height; ++y) {
        std::uint32_t *row = m_picture->Row(area.Y + y) + area.X;
        BYTE *bytes = static_cast<BYTE *>(data.Scan0) + static_cast<std::ptrdiff_t>(data.Stride) * y;
        if (intoPicture) {
            WriteRow(bytes, m_lock->format, area.Width, m_picture->HasAlpha(), row);
        } else {
            ReadRow(row, m_picture->HasAlpha(), m_lock->format, area.Width, bytes);
        }
    }
    if (intoPicture) cairo_surface_mark_dirty(m_picture->surface.get());
}

Status Bitmap::SetResolution(REAL xdpi, REAL ydpi) {
    if (!m_picture || !(xdpi > 0) || !(ydpi > 0) || !std::isfinite(xdpi) || !std::isfinite(ydpi)) {
        return SetResult(InvalidParameter);
    }
    m_picture->dpiX = xdpi;
    m_picture->dpiY = ydpi;
    return Ok;
}

Status Bitmap::GetHBITMAP(const Color &background, HBITMAP *handle) const {
    if (!m_picture || !handle) return SetResult(InvalidParameter);
    const int width = m_picture->Width();
    const int height = m_picture->Height();
    *handle = ktl::CreateHBitmap(width, height);
    if (!*handle) return SetResult(OutOfMemory);
    cairo_surface_flush(m_picture->surface.get());
    auto out = (*handle)->bits.begin();
    for (int y = height - 1; y >= 0; --y) {
        const std::uint32_t *row = m_picture->Row(y);
        for (int x = 0; x < width; ++x) {
            const std::uint32_t pixel = m_picture->HasAlpha() ? row[x] : row[x] | 0xFF000000U;
            *out++ = OverBackground(pixel, background.GetValue());
        }
    }
    return Ok;
}

}  // namespace Gdiplus
