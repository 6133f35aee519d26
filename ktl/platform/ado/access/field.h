#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/ado/value.h"
#include "ktl/platform/export.h"

namespace ktl::ado::access {

class Database;

/// The column types of Access files, by the numbers in the table's definition.
enum class FieldType : int {
    Boolean = 1,
    Byte = 2,
    SmallInt = 3,
    Integer = 4,
    Currency = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Numeric = 16,
    Complex = 18,
    BigInt = 19,
};

/// What a recordset tells of a column of this type; the name is left to the caller. `bytes` is its size in the
/// definition, of which a character takes `characterBytes`.
KTL_API Column DescribeField(FieldType type, int bytes, int characterBytes, int precision, int scale);

/// Reads a stored field that is not null. `bytes` are those of the row; a Boolean is no field. Throws Error (damaged)
/// when they are too few for the type, and for memos and byte blocks that lie outside the row when they cannot be
/// followed to their end.
KTL_API void ReadField(Database &database, FieldType type, int scale, std::string_view bytes, Value &value);

/// The text of a Jet 4 field: UTF-16, or after the mark FF FE a form with one byte for each character below 256, in
/// which a zero byte switches between the two.
KTL_API CString TextFromField(std::string_view bytes);

}  // namespace ktl::ado::access
