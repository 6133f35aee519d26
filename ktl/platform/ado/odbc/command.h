#pragma once

#include <string>
#include <vector>

#include "ktl/platform/ado/odbc/link.h"
#include "ktl/platform/ado/value.h"

namespace ktl::ado::odbc {

/// What stands for a `?` of a statement: text in UTF-16, which the server turns into the type it meets, or bytes.
struct Parameter {
    std::u16string text;
    std::string bytes;
    bool isBytes = false;

    static Parameter Text(const CString &gbk);
    static Parameter Bytes(std::string_view bytes);

    /// Of a value that is not null. Dates and numbers become texts that keep every digit and mean the same in every
    /// language of the server.
    static Parameter Of(const Value &value);
};

/// One statement on its way to the server, and its results. It must not outlive the link.
class Command {
  public:
    explicit Command(const Link &link);

    /// Sends the statement. Throws Error with the server's diagnostics.
    void Run(const CString &statement, std::vector<Parameter> parameters = {});
    /// The rows that the current result touched; 0 where that has no meaning.
    long long Touched() const;
    /// Steps from results without columns to the first that has some; false at the end of the batch.
    bool FindRows();
    /// Steps through the further results of a batch, so that a fault of a later statement is not lost.
    void Finish();
    /// The statement's handle, which stands on the current result.
    const Handle &Statement() const { return m_statement; }

  private:
    void Bind(std::size_t position);

    Handle m_statement;
    std::vector<Parameter> m_parameters;
    std::vector<long> m_sizes;
    bool m_isEmpty = false;
};

}  // namespace ktl::ado::odbc
