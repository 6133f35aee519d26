#pragma once

#include <memory>

#include "ktl/platform/ado/connection.h"
#include "ktl/platform/ado/sql/executor.h"
#include "ktl/platform/ado/sql/table.h"

namespace ktl::ado::sql {

/// A connection whose statements this layer runs over a store's tables.
class StatementConnection final : public Connection {
  public:
    explicit StatementConnection(std::shared_ptr<Store> store);
    ~StatementConnection() override;

    long long Execute(const CString &statement) override;
    RecordsetRef OpenRecordset(const CString &statement, bool clientCursor) override;
    void ReadPages(const CString &statement, const std::function<bool(const RecordsetRef &page)> &use) override;
    RecordsetRef OpenSchema(int schema) override;
    std::shared_ptr<void> HoldTable(const CString &table) override;
    void Close() override;
    bool IsOpen() const override { return m_store != nullptr; }

  private:
    void RequireOpen() const;

    std::shared_ptr<Store> m_store;
    std::unique_ptr<Executor> m_executor;
};

}  // namespace ktl::ado::sql
