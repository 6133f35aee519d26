#pragma once

#include <cstdint>

/// \file
/// The desktop platform's integer names, with the platform's widths: `long`-named types are 32 bits wide here as they
/// are there, so that streams and records keep their layout.

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using __int64 = long long;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using WCHAR = wchar_t;

/// A colour as 0x00BBGGRR.
using COLORREF = std::uint32_t;

// Other libraries' headers define these as macros, before or after this one; either form serves.
#ifndef TRUE
constexpr BOOL TRUE = 1;
#endif
#ifndef FALSE
constexpr BOOL FALSE = 0;
#endif

constexpr COLORREF RGB(unsigned red, unsigned green, unsigned blue) {
    return (red & 0xFFU) | (green & 0xFFU) << 8 | (blue & 0xFFU) << 16;
}
constexpr BYTE GetRValue(COLORREF color) {
    return static_cast<BYTE>(color);
}
constexpr BYTE GetGValue(COLORREF color) {
    return static_cast<BYTE>(color >> 8);
}
constexpr BYTE GetBValue(COLORREF color) {
    return static_cast<BYTE>(color >> 16);
}

/// A device-independent bitmap's handle; see `Gdiplus::Bitmap::GetHBITMAP` and `DeleteObject`.
struct HBITMAP__;
using HBITMAP = HBITMAP__ *;

/// A class identifier.
struct _GUID {
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    BYTE Data4[8] = {};

    friend bool operator==(const _GUID &, const _GUID &) = default;
};
using GUID = _GUID;
using CLSID = _GUID;
