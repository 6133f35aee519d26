#pragma once

#include <string_view>

#include "ktl/platform/ado/dbase/header.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::dbase {

/// \file
/// Between a record's bytes and values. Memo columns have their pointers here only; texts are in the table's own
/// encoding.

/// The text or bytes of a C, V or Q field without its padding. `record` is the whole record.
std::string_view FieldText(const Header &header, const Field &field, const char *record);
/// A field that is neither text nor memo. A blank one is null, or the platform's empty value (0, false, day 0) in a
/// table that marks its nulls.
void DecodeCell(const Header &header, const Field &field, const char *record, Value &value);
/// The block number of a memo field; 0 is none.
std::uint32_t MemoPointer(const Field &field, const char *record);
void SetMemoPointer(const Field &field, std::uint32_t block, char *record);

/// True when the record's null bits call the field null.
bool IsMarkedNull(const Header &header, const Field &field, const char *record);
void MarkNull(const Header &header, const Field &field, bool null, char *record);
/// The blank state: spaces or zeros.
void BlankCell(const Field &field, char *record);

/// Writes a text that fits, already in the table's encoding.
void EncodeText(const Header &header, const Field &field, std::string_view text, char *record);
/// Writes a value of the field's class (numbers into logical fields too) that is not null; not for texts and memos.
/// Throws Error (numeric overflow) for a number that does not fit in any form. With `lossy` such a number becomes
/// asterisks instead.
void EncodeCell(const Field &field, const Value &value, bool lossy, char *record);

}  // namespace ktl::ado::dbase
