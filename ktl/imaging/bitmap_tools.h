#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/gdiplus/bitmap.h"
#include "ktl/platform/string.h"
#include "ktl/platform/types.h"

/// \file
/// Bitmaps from files and buffers and back, a deeper tile cut out of the one above it, and a colour swatch. Nothing
/// here shows a message: a failure is a null result or 0. All of it needs drawing to be started.

/// The file format that `SaveBitmap` writes.
enum ENUM_IMAGE_TYPE : int {
    IMAGE_TYPE_JPEG = 1,
    IMAGE_TYPE_PNG = 2,
    IMAGE_TYPE_GIF = 3,
    IMAGE_TYPE_BMP = 4,
    IMAGE_TYPE_TIFF = 5,
};

/// The class id of the encoder for a MIME type such as L"image/png": 1 if there is one, otherwise 0 with `*clsid` left
/// as it was.
KTL_API int GetImageCLSID(const wchar_t *mime, _GUID *clsid);

/// A 32-bit ARGB copy of the picture in a file, which holds no lock on it; null if there is no such file or it can't be
/// drawn. The pixels are copied one to one, whatever resolution the file tells. A `deleteFile` other than 0 removes the
/// file after that. The caller owns the result.
KTL_API Gdiplus::Bitmap *GetBitmapWithoutPath(CString path, int deleteFile);

/// 1 if the bitmap can be used. Otherwise 0, and the bitmap is DELETED: the caller's pointer must not be used again.
KTL_API int IsValidBitmap(Gdiplus::Bitmap *bitmap);

/// Saves the picture `source` as JPEG: 1 on success. `target` is kept only when a file of that name exists; an empty or
/// a new name is replaced by the source's without its last 4 characters plus ".jpg". A `deleteSource` other than 0
/// removes the source after success, unless it is the file that was written.
KTL_API int SaveAsJpeg(CString source, CString &target, int deleteSource);

/// Each writes the bitmap to a file: 1 on success, otherwise 0. The bitmap stays the caller's.
KTL_API int SaveBitmapToJpeg(Gdiplus::Bitmap *bitmap, CString path);
KTL_API int SaveBitmapToPng(Gdiplus::Bitmap *bitmap, CString path);
KTL_API int SaveBitmapToGif(Gdiplus::Bitmap *bitmap, CString path);
KTL_API int SaveBitmapToBmp(Gdiplus::Bitmap *bitmap, CString path);
/// The same by type; an unknown type writes JPEG.
KTL_API int SaveBitmap(Gdiplus::Bitmap *bitmap, CString path, ENUM_IMAGE_TYPE type);

/// The bitmap as a file in memory, in the format of the MIME type "image/" + `format`. The buffer of `size` bytes is
/// from `malloc` and the caller's to `free`; null, with a size of 0, on failure.
KTL_API unsigned char *CreateBufferFromBitmap(Gdiplus::Bitmap *bitmap, unsigned int &size, CString format);
KTL_API unsigned char *CreateBufferFromPNG(Gdiplus::Bitmap *bitmap, unsigned int &size);
/// The bitmap of a file in memory. The buffer stays the caller's and isn't needed any more; the result is the caller's
/// too. Bytes that are no picture give a bitmap whose status is not Ok, to be given to `IsValidBitmap`.
KTL_API Gdiplus::Bitmap *GetBitmapFromBuffer(unsigned char *buffer, int size);

/// The 256 by 256 tile `childKey` of a deeper level, enlarged without smoothing from the tile `parentKey` above it. The
/// keys are quadtree paths: q upper left, r upper right, s lower right, t lower left. A child more than 8 letters
/// deeper has no pixel of the parent to itself and stays empty. The caller owns the result.
KTL_API Gdiplus::Bitmap *GetParentBitmap(Gdiplus::Bitmap *parent, CString parentKey, CString childKey);

/// A 16 by 16 swatch of a colour (0x00BBGGRR) with the low byte of `alpha`, outlined in black over white, on the key
/// colour magenta. The caller ends the handle with `DeleteObject`.
KTL_API HBITMAP GetColorIcon(unsigned long colour, int alpha);
