#pragma once

#include "ktl/attributes/field.h"

namespace ktl {

/// Of whole numbers, decimals and truth: such values stand in a statement without quotes.
bool IsNumberType(ENUM_DATA type);
/// Of the columns that the system keeps: ID, ShapeID and Update, whatever their case.
bool IsSystemColumn(const CString &name);

}  // namespace ktl
