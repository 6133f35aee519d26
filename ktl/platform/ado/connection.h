#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "ktl/platform/ado/recordset.h"
#include "ktl/platform/string.h"

namespace ktl::ado {

class Connection;
class ConnectionString;
/// Holds an open connection, or is empty and tests as false.
using ConnectionRef = std::shared_ptr<Connection>;

/// An open connection to a store of tables, used from one thread at a time. Faults are thrown as Error. Recordsets
/// may outlive their connection.
///
///     ConnectionRef connection = Connection::Open("Provider=VFPOLEDB.1;Data Source=/tmp/db");
///     connection->Execute("Update w001 Set ID = -1 Where ShapeID = 7");
class KTL_API Connection {
  public:
    /// The schema number of the table list.
    static constexpr int kSchemaTables = 20;

    /// Opens the store that the string's `Provider` names. Throws Error: no such provider, or what the store reports.
    /// `user` and `password` count where the string holds none.
    static ConnectionRef Open(const CString &connectionString, const CString &user = CString(),
                              const CString &password = CString());

    Connection() = default;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    virtual ~Connection() = default;

    /// Runs a statement; any rows that it gives are dropped. The number of rows that it touched, 0 where that has no
    /// meaning.
    virtual long long Execute(const CString &statement) = 0;
    /// The rows of a statement; never empty. A statement that gives no rows is run and gives a closed recordset.
    /// `clientCursor` asks for the rows to be held on this side; the result looks the same either way.
    virtual RecordsetRef OpenRecordset(const CString &statement, bool clientCursor) = 0;
    /// Hands over what `OpenRecordset` gives in pages, until `use` answers false: recordsets that can't be written, one
    /// at least. Where the store can, neither it nor this side holds more than a page, and nothing is locked while
    /// `use` runs; a row that others change meanwhile then comes as it was or as it is, and a table whose columns
    /// change ends the walk with an Error.
    virtual void ReadPages(const CString &statement, const std::function<bool(const RecordsetRef &page)> &use);
    /// A row for each table with the columns TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME and TABLE_TYPE ("TABLE" for a
    /// plain one). Throws Error for a schema other than `kSchemaTables`.
    virtual RecordsetRef OpenSchema(int schema) = 0;
    /// Keeps others from a table for a run of statements that change its rows, which are then cheaper; each is still in
    /// the store at its end. Lasts as long as what is returned. Null when the store has no such thing or the table
    /// cannot be had: the statements work all the same, or say why not.
    virtual std::shared_ptr<void> HoldTable(const CString &table);

    /// Harmless when closed already. Open recordsets stay readable.
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;

    /// Seconds; kept for the next opening, as it has no effect on an open connection.
    void SetConnectionTimeout(int seconds) { m_connectionTimeout = seconds; }
    int GetConnectionTimeout() const { return m_connectionTimeout; }

  private:
    int m_connectionTimeout = 15;
};

/// Opens a store; throws Error.
using ProviderFactory = ConnectionRef (*)(const ConnectionString &settings);

/// Makes a store known under a provider's name, without regard to case; a later one of the same name wins. A store's
/// source holds one static object of this class.
class KTL_API ProviderRegistration {
  public:
    ProviderRegistration(const char *provider, ProviderFactory factory);
};

/// One table of the table schema.
struct TableEntry {
    CString name;
    CString type = "TABLE";
};
/// The schema recordset of those tables, as `Connection::OpenSchema` gives it.
KTL_API RecordsetRef MakeTableSchema(const std::vector<TableEntry> &tables);

}  // namespace ktl::ado
