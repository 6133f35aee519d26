#pragma once

#include <cstdint>

#include "ktl/platform/types.h"

class CFile;
class CString;

namespace ktl {

/// What the first 32 bytes of a .dbf file say, little-endian.
struct DbfHead {
    static constexpr int kSize = 32;

    /// At 4.
    std::uint32_t recordCount = 0;
    /// At 8: the first record begins here.
    int headerLength = 0;
    /// At 10, with the deletion mark in front.
    int recordLength = 0;

    /// Where the byte `offset` of a record stands in the file.
    LONGLONG PositionOf(int record, int offset) const {
        return static_cast<LONGLONG>(headerLength) + static_cast<LONGLONG>(recordLength) * record + offset;
    }
    /// The records that the file has room for, at most as many as it says.
    int RecordsIn(const CFile &file) const;
};

/// Columns that each table starts with, as bytes of a record behind the deletion mark.
constexpr int kIdOffset = 1;
constexpr int kShapeIdOffset = 5;

/// Takes a file away, if there is one; false when that fails.
bool RemoveIfThere(const CString &path);

/// Reads from the file's start; what a short file lacks counts as zeros. Throws CFileException.
DbfHead ReadDbfHead(CFile &file);

}  // namespace ktl
