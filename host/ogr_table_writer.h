#pragma once

#include <string>
#include <vector>

#include "host/gdal_messages.h"
#include "host/staged_files.h"
#include "host/table_import.h"
#include "host/table_rows.h"

class GDALDataset;
class GDALDriver;
class OGRLayer;

namespace ktl::host {

/// Makes a dataset with one layer without geometry, in the format that the target's ending tells. Nothing stands at the
/// target before `Finish`. Throws `Error`.
class OgrTableWriter {
  public:
    OgrTableWriter(const std::string &target, bool overwrite);
    OgrTableWriter(const OgrTableWriter &) = delete;
    OgrTableWriter &operator=(const OgrTableWriter &) = delete;
    ~OgrTableWriter();

    /// Once, before the rows.
    void MakeColumns(const std::vector<TableColumn> &columns);
    void Write(const TableRow &row);
    TableReport Finish();

  private:
    void MakeLayer();
    void MakeColumn(const TableColumn &column);
    long long CountMadeRows();
    void RequireAllRows();
    void Close();
    [[noreturn]] void Fail(const char *what);

    std::string m_target;
    GDALDriver *m_driver;
    StagedFiles m_files;
    GdalMessages m_messages;
    GDALDataset *m_dataset = nullptr;
    OGRLayer *m_layer = nullptr;
    /// The layer's field for each column; -1 for one that is left out.
    std::vector<int> m_fields;
    TableReport m_report;
};

}  // namespace ktl::host
