#pragma once

#include "ktl/platform/export.h"
#include "ktl/platform/types.h"

/// \file
/// Streams of bytes counted by reference, and the one on memory through which images pass to and from buffers.

using HRESULT = LONG;
using HGLOBAL = void *;

constexpr HRESULT S_OK = 0;
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001U);
constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009U);
constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070U);
constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

/// 64-bit positions, as the stream calls take them.
struct LARGE_INTEGER {
    LONGLONG QuadPart = 0;
};
struct ULARGE_INTEGER {
    ULONGLONG QuadPart = 0;
};

/// Where a stream's `Seek` counts from.
enum STREAM_SEEK : DWORD { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STATFLAG : DWORD { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1 };

/// What `Stat` tells of a stream: its size in bytes.
struct STATSTG {
    ULARGE_INTEGER cbSize;
};

/// A stream of bytes with a position. It belongs to whoever holds a reference: a new stream has one, and the last
/// `Release` deletes it.
struct KTL_API IStream {
    /// Both give the number of references that are left.
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

    /// Copies up to `size` bytes; `*done`, when given, tells how many. At the end that is 0, and the result still S_OK.
    virtual HRESULT Read(void *data, ULONG size, ULONG *done) = 0;
    /// Writes all bytes and grows the stream as needed, filling a gap with zeros; STG_E_MEDIUMFULL when it cannot.
    virtual HRESULT Write(const void *data, ULONG size, ULONG *done) = 0;
    /// Moves by `offset` from `origin`, also past the end; before the start is STG_E_INVALIDFUNCTION and moves nothing.
    virtual HRESULT Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER *position) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
    virtual HRESULT Stat(STATSTG *stat, DWORD flags) = 0;

  protected:
    virtual ~IStream() = default;
};

/// A new, empty stream on memory of its own, which the caller releases. There are no global memory handles here:
/// `memory` must be null, and the memory goes with the stream whatever `deleteOnRelease` says.
KTL_API HRESULT CreateStreamOnHGlobal(HGLOBAL memory, BOOL deleteOnRelease, IStream **stream);
