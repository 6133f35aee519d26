#pragma once

#include <memory>
#include <string>

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/codecs.h"
#include "ktl/platform/gdiplus/hbitmap.h"
#include "ktl/platform/gdiplus/stream.h"
#include "ktl/platform/gdiplus/types.h"
#include "ktl/platform/types.h"

namespace ktl::raster {
struct ImageAccess;
struct Picture;
}  // namespace ktl::raster

namespace Gdiplus {

/// Pictures of pixels are all there are.
enum ImageType : int { ImageTypeUnknown = 0, ImageTypeBitmap = 1, ImageTypeMetafile = 2 };

/// What a block of pixels is for, and whose memory it is; a sum of these.
enum ImageLockMode {
    ImageLockModeRead = 0x0001,
    ImageLockModeWrite = 0x0002,
    ImageLockModeUserInputBuf = 0x0004,
};

/// Largest side in pixels, and most bytes, that a bitmap takes; beyond them its status is OutOfMemory.
constexpr INT kMaxBitmapSide = 32767;
constexpr std::uint64_t kMaxBitmapBytes = std::uint64_t{1} << 30;

/// A block of pixels in the caller's sight. `Scan0` is the first byte of the upper row and `Stride` the bytes from one
/// row to the next.
class BitmapData {
  public:
    UINT Width = 0;
    UINT Height = 0;
    INT Stride = 0;
    PixelFormat Format = 0;
    void *Scan0 = nullptr;
    std::uintptr_t Reserved = 0;
};

/// A picture that is loaded, told about, drawn and saved. The file or stream it came from is free again as soon as the
/// constructor returns. `GetLastStatus` tells whether it can be used: FileNotFound, UnknownImageFormat for what no
/// decoder knows or what is cut short, OutOfMemory for what is larger than the limits above.
///
/// Inside, pixels are 32 bits: premultiplied with alpha, or opaque. Whatever format is reported, the narrower and the
/// indexed ones are kept so too, which rounds the colours of nearly transparent pixels.
class KTL_API Image {
  public:
    /// From a file; the name is taken as it is, with '\' or '/'. Colour management is not offered.
    explicit Image(const WCHAR *filename, BOOL useEmbeddedColorManagement = FALSE);
    /// From a stream, read from its start to its end.
    explicit Image(IStream *stream, BOOL useEmbeddedColorManagement = FALSE);
    /// The caller owns the result; it is null before drawing is started.
    static Image *FromFile(const WCHAR *filename, BOOL useEmbeddedColorManagement = FALSE);
    static Image *FromStream(IStream *stream, BOOL useEmbeddedColorManagement = FALSE);
    virtual ~Image();
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    /// A copy with pixels of its own, which the caller owns; null for an image that can't be used.
    virtual Image *Clone() const;

    /// Writes the image with the encoder of that class id: the whole file or nothing. A file of that name is replaced
    /// only after success. UnknownImageFormat when there is no such encoder.
    Status Save(const WCHAR *filename, const CLSID *encoder, const EncoderParameters *parameters = nullptr);
    /// The same into a stream, from its position on.
    Status Save(IStream *stream, const CLSID *encoder, const EncoderParameters *parameters = nullptr);

    /// All of these are 0 for an image that can't be used. Resolutions are in dots per inch, 96 unless set.
    ImageType GetType() const;
    UINT GetWidth() const;
    UINT GetHeight() const;
    REAL GetHorizontalResolution() const;
    REAL GetVerticalResolution() const;
    PixelFormat GetPixelFormat() const;
    /// One of the ImageFormat identifiers: the format it was loaded from, or that of a bitmap in memory.
    Status GetRawFormat(GUID *format) const;
    /// The status of the last call that failed; asking resets it to Ok, but an image that can't be used keeps its
    /// reason.
    Status GetLastStatus() const;

  protected:
    Image();
    Status SetResult(Status status) const;
    /// Takes the picture, or remembers why there is none.
    void Take(Status status, std::unique_ptr<ktl::raster::Picture> picture);

    /// Null for an image that can't be used.
    std::unique_ptr<ktl::raster::Picture> m_picture;

  private:
    friend struct ktl::raster::ImageAccess;
    Status Encode(const CLSID *encoder, const EncoderParameters *parameters, std::string &bytes) const;

    Status m_loadStatus = GenericError;
    mutable Status m_lastStatus = Ok;
};

/// A picture of pixels that can be read, set and, through a Graphics, drawn on.
///
///     Gdiplus::Bitmap bitmap(256, 256, PixelFormat32bppARGB);
///     Gdiplus::Graphics graphics(&bitmap);
class KTL_API Bitmap : public Image {
  public:
    /// All pixels zero: transparent, or black in a format without alpha. A side of 0 or less, or an unknown format,
    /// gives InvalidParameter; a size beyond the limits OutOfMemory.
    Bitmap(INT width, INT height, PixelFormat format = PixelFormat32bppARGB);
    /// A copy of foreign pixels in one of the 24-bit and 32-bit formats; `stride` may be negative.
    Bitmap(INT width, INT height, INT stride, PixelFormat format, const BYTE *scan0);
    explicit Bitmap(const WCHAR *filename, BOOL useEmbeddedColorManagement = FALSE);
    explicit Bitmap(IStream *stream, BOOL useEmbeddedColorManagement = FALSE);
    /// The caller owns the result; it is null before drawing is started.
    static Bitmap *FromFile(const WCHAR *filename, BOOL useEmbeddedColorManagement = FALSE);
    static Bitmap *FromStream(IStream *stream, BOOL useEmbeddedColorManagement = FALSE);
    ~Bitmap() override;

    Bitmap *Clone() const override;
    /// A copy of a part that must lie inside, in a format of the caller's choice; null otherwise. The caller owns it.
    Bitmap *Clone(INT x, INT y, INT width, INT height, PixelFormat format) const;
    Bitmap *Clone(const Rect &area, PixelFormat format) const;

    /// Straight (not premultiplied) colours; outside of the picture InvalidParameter. Setting a pixel of an indexed
    /// format is InvalidParameter too.
    Status GetPixel(INT x, INT y, Color *color) const;
    Status SetPixel(INT x, INT y, const Color &color);

    /// Shows a part (null: the whole) as pixels of one of the 24-bit and 32-bit formats. The block belongs to the
    /// bitmap, or to the caller under ImageLockModeUserInputBuf, until `UnlockBits`, which takes in what was written
    /// when the mode says so. One block at a time: a second one is WrongState.
    Status LockBits(const Rect *area, UINT flags, PixelFormat format, BitmapData *data);
    Status UnlockBits(BitmapData *data);

    /// Dots per inch; InvalidParameter unless both are above 0.
    Status SetResolution(REAL xdpi, REAL ydpi);

    /// A new block of 32-bit pixels, premultiplied, which the caller ends with `DeleteObject`. What is behind shows
    /// through by 255 minus alpha, and the alpha byte stays the picture's; the background's own alpha has no effect.
    Status GetHBITMAP(const Color &background, HBITMAP *handle) const;

  private:
    struct Lock;
    Bitmap();
    void Exchange(const BitmapData &data, bool intoPicture);

    std::unique_ptr<Lock> m_lock;
};

}  // namespace Gdiplus
