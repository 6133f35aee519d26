#pragma once

#include <memory>
#include <string>

#include "host/table_rows.h"

namespace ktl::cli {

enum class TableForm { kAligned, kCsv, kJson };

/// Writes rows to standard output as they come, UTF-8. Throws `host::Error` when they can't be written.
class TableOutput : public host::TableSink {
  public:
    /// Once, behind the last row.
    virtual void Finish() = 0;
};

/// Aligned columns under their names, for people: numbers to the right, a long text cut, bytes told by their number.
/// Each column is as wide as its widest value among the first 1000 rows; a wider one further on moves what stands
/// behind it. CSV as in RFC 4180, bytes in base64. JSON: an array of objects, with null for no value, bytes in base64.
std::unique_ptr<TableOutput> MakeTableOutput(TableForm form);

/// Writes a text to standard output. Throws `host::Error` that says why it can't be written.
void Print(const std::string &text);

}  // namespace ktl::cli
