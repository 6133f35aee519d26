#include "ktl/imaging/bitmap_tools.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <memory>

#include "ktl/core/utility.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/file.h"
#include "ktl/platform/gdiplus/gdiplus.h"

namespace {

using BitmapPtr = std::unique_ptr<Gdiplus::Bitmap>;

struct MallocDeleter {
    void operator()(void *memory) const { std::free(memory); }
};
using CodecList = std::unique_ptr<Gdiplus::ImageCodecInfo, MallocDeleter>;

struct StreamDeleter {
    void operator()(IStream *stream) const { stream->Release(); }
};
using StreamPtr = std::unique_ptr<IStream, StreamDeleter>;

constexpr int kTileSide = 256;
constexpr wchar_t kJpeg[] = L"image/jpeg";

StreamPtr MakeStream() {
    IStream *stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    return StreamPtr(stream);
}

std::wstring Wide(const CString &text) {
    return ktl::WideFromGbk(text.View());
}

/// A file that cannot be removed stays: none of the functions here tells.
void RemoveFile(const CString &path) {
    try {
        CFile::Remove(path);
    } catch (const CException &) {
    }
}

int Save(Gdiplus::Bitmap *bitmap, const CString &path, const wchar_t *mime) {
    _GUID encoder;
    if (!bitmap || !GetImageCLSID(mime, &encoder)) return 0;
    return bitmap->Save(Wide(path).c_str(), &encoder) == Gdiplus::Ok ? 1 : 0;
}

/// All bytes of a stream in a buffer from `malloc`; null with a size of 0 on failure.
unsigned char *CopyOut(IStream &stream, unsigned int &size) {
    STATSTG stat;
    if (FAILED(stream.Stat(&stat, STATFLAG_NONAME)) || stat.cbSize.QuadPart == 0) return nullptr;
    const auto bytes = static_cast<ULONG>(stat.cbSize.QuadPart);
    std::unique_ptr<unsigned char, MallocDeleter> buffer(static_cast<unsigned char *>(std::malloc(bytes)));
    if (!buffer || FAILED(stream.Seek({}, STREAM_SEEK_SET, nullptr))) return nullptr;
    ULONG done = 0;
    if (FAILED(stream.Read(buffer.get(), bytes, &done)) || done != bytes) return nullptr;
    size = bytes;
    return buffer.release();
}

/// The part of a parent tile that a child covers.
struct TilePart {
    int x = 0;
    int y = 0;
    int side = kTileSide;
};

TilePart PartOf(const CString &suffix) {
    TilePart part;
    for (const char letter : suffix.View()) {
        part.side /= 2;
        if (letter == 'r' || letter == 's') part.x += part.side;
        if (letter == 's' || letter == 't') part.y += part.side;
    }
    return part;
}

}  // namespace

int GetImageCLSID(const wchar_t *mime, _GUID *clsid) {
    UINT count = 0;
    UINT size = 0;
    Gdiplus::GetImageEncodersSize(&count, &size);
    if (size == 0 || !mime || !clsid) return 0;
    const CodecList list(static_cast<Gdiplus::ImageCodecInfo *>(std::malloc(size)));
    if (!list || Gdiplus::GetImageEncoders(count, size, list.get()) != Gdiplus::Ok) return 0;
    const Gdiplus::ImageCodecInfo *end = list.get() + count;
    const auto *found =
        std::find_if(static_cast<const Gdiplus::ImageCodecInfo *>(list.get()), end,
                     [mime](const Gdiplus::ImageCodecInfo &codec) { return std::wcscmp(codec.MimeType, mime) == 0; });
    if (found == end) return 0;
    *clsid = found->Clsid;
    return 1;
}

Gdiplus::Bitmap *GetBitmapWithoutPath(CString path, int deleteFile) {
    if (!KtlIsValidFilePath(path)) return nullptr;
    BitmapPtr copy;
    {
        Gdiplus::Bitmap loaded(Wide(path).c_str());
        copy = std::make_unique<Gdiplus::Bitmap>(static_cast<int>(loaded.GetWidth()),
                                                 static_cast<int>(loaded.GetHeight()), Gdiplus::PixelFormat32bppARGB);
        Gdiplus::Graphics graphics(copy.get());
        if (graphics.GetLastStatus() != Gdiplus::Ok) return nullptr;
        loaded.SetResolution(graphics.GetDpiX(), graphics.GetDpiY());
        graphics.DrawImage(&loaded, 0, 0);
    }
    if (deleteFile) RemoveFile(path);
    return copy.release();
}

int IsValidBitmap(Gdiplus::Bitmap *bitmap) {
    if (!bitmap) return 0;
    if (bitmap->GetLastStatus() == Gdiplus::Ok) return 1;
    delete bitmap;
    return 0;
}

int SaveAsJpeg(CString source, CString &target, int deleteSource) {
    // A new name of the caller's is not taken on purpose: only a file that is there already is written over.
    if (target.IsEmpty() || !KtlIsValidFilePath(target)) target = source.Left(source.GetLength() - 4) + ".jpg";
    {
        Gdiplus::Bitmap bitmap(Wide(source).c_str());
        if (!Save(&bitmap, target, kJpeg)) return 0;
    }
    if (!KtlIsValidFilePath(target)) return 0;
    if (deleteSource && source.CompareNoCase(target) != 0) RemoveFile(source);
    return 1;
}

int SaveBitmapToJpeg(Gdiplus::Bitmap *bitmap, CString path) {
    return Save(bitmap, path, kJpeg);
}

int SaveBitmapToPng(Gdiplus::Bitmap *bitmap, CString path) {
    return Save(bitmap, path, L"image/png");
}

int SaveBitmapToGif(Gdiplus::Bitmap *bitmap, CString path) {
    return Save(bitmap, path, L"image/gif");
}

int SaveBitmapToBmp(Gdiplus::Bitmap *bitmap, CString path) {
    return Save(bitmap, path, L"image/bmp");
}

int SaveBitmap(Gdiplus::Bitmap *bitmap, CString path, ENUM_IMAGE_TYPE type) {
    constexpr const wchar_t *kMimes[] = {kJpeg, kJpeg, L"image/png", L"image/gif", L"image/bmp", L"image/tiff"};
    const auto known = static_cast<int>(type) >= 0 && static_cast<std::size_t>(type) < std::size(kMimes);
    return Save(bitmap, path, known ? kMimes[type] : kJpeg);
}

unsigned char *CreateBufferFromBitmap(Gdiplus::Bitmap *bitmap, unsigned int &size, CString format) {
    size = 0;
    CString mime;
    mime.Format("image/%s", format.GetString());
    _GUID encoder;
    if (!bitmap || !GetImageCLSID(Wide(mime).c_str(), &encoder)) return nullptr;
    const StreamPtr stream = MakeStream();
    if (!stream || bitmap->Save(stream.get(), &encoder) != Gdiplus::Ok) return nullptr;
    return CopyOut(*stream, size);
}

unsigned char *CreateBufferFromPNG(Gdiplus::Bitmap *bitmap, unsigned int &size) {
    return CreateBufferFromBitmap(bitmap, size, "png");
}

Gdiplus::Bitmap *GetBitmapFromBuffer(unsigned char *buffer, int size) {
    if (!buffer || size < 0) return nullptr;
    const StreamPtr stream = MakeStream();
    if (!stream || FAILED(stream->Write(buffer, static_cast<ULONG>(size), nullptr))) return nullptr;
    return Gdiplus::Bitmap::FromStream(stream.get());
}

Gdiplus::Bitmap *GetParentBitmap(Gdiplus::Bitmap *parent, CString parentKey, CString childKey) {
    const TilePart part = PartOf(childKey.Mid(parentKey.GetLength()));
    auto child = std::make_unique<Gdiplus::Bitmap>(kTileSide, kTileSide, Gdiplus::PixelFormat32bppARGB);
    Gdiplus::Graphics graphics(child.get());
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeNearestNeighbor);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHighQuality);
    Gdiplus::ImageAttributes attributes;
    attributes.SetNoOp(Gdiplus::ColorAdjustTypeDefault);
    const auto real = [](int value) { return static_cast<Gdiplus::REAL>(value); };
    graphics.DrawImage(parent, Gdiplus::RectF(0, 0, 256.0F, 256.0F), real(part.x), real(part.y), real(part.side),
                       real(part.side), Gdiplus::UnitPixel, &attributes);
    return child.release();
}

HBITMAP GetColorIcon(unsigned long colour, int alpha) {
    using Gdiplus::Color;
    Gdiplus::Bitmap bitmap(16, 16, Gdiplus::PixelFormat32bppARGB);
    {
        Gdiplus::Graphics graphics(&bitmap);
        graphics.Clear(Color(255, 255, 0, 255));
        const Gdiplus::Rect swatch(3, 3, 10, 10);
        const auto rgb = static_cast<COLORREF>(colour);
        const Gdiplus::SolidBrush white(Color(255, 255, 255, 255));
        graphics.FillRectangle(&white, swatch);
        const Gdiplus::SolidBrush fill(Color(static_cast<BYTE>(alpha), GetRValue(rgb), GetGValue(rgb), GetBValue(rgb)));
        graphics.FillRectangle(&fill, swatch);
        const Gdiplus::Pen outline(Color(255, 0, 0, 0), 1.0F);
        graphics.DrawRectangle(&outline, swatch);
    }
    HBITMAP icon = nullptr;
    bitmap.GetHBITMAP(Color(0, 0, 0, 0), &icon);
    return icon;
}
