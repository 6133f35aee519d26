#pragma once

#include "ktl/platform/exception.h"
#include "ktl/platform/string.h"

namespace ktl::ado {

/// Numbers of faults that callers tell apart. A store may raise others, with its driver's own number.
namespace error_number {
inline constexpr int kFileNotFound = 1;
inline constexpr int kFileInUse = 3;
inline constexpr int kSyntax = 10;
inline constexpr int kColumnNotFound = 12;
inline constexpr int kAliasNotFound = 13;
inline constexpr int kNotATable = 15;
inline constexpr int kNumericOverflow = 39;
inline constexpr int kMemoFile = 41;
inline constexpr int kOperandTypes = 107;
inline constexpr int kInUseByAnother = 108;
inline constexpr int kExclusiveNeeded = 110;
inline constexpr int kReadOnly = 111;
inline constexpr int kFileAccess = 1104;
inline constexpr int kRecordTooLong = 1126;
inline constexpr int kNullNotAllowed = 1581;
inline constexpr int kColumnName = 1712;
inline constexpr int kUnsupported = 1999;
inline constexpr int kNoCurrentRow = 3021;
inline constexpr int kTypeMismatch = 3421;
inline constexpr int kNoProvider = 3706;
inline constexpr int kClosed = 3704;
}  // namespace error_number

/// A fault of a connection, a statement or a recordset. The description is what goes to the log: for a statement it
/// says what was wrong and where.
class KTL_API Error : public CException {
  public:
    /// `description` is GBK.
    explicit Error(const CString &description, int number = 0);

    /// In GBK.
    const CString &GetDescription() const { return m_description; }
    int GetNumber() const { return m_number; }

  private:
    CString m_description;
    int m_number;
};

}  // namespace ktl::ado
