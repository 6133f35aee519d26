#pragma once

#include <memory>

#include "ktl/attributes/table_local.h"

class CAdo_Local_mdb;

/// The place of an Access table in a document: it has its kind and does nothing.
class KTL_API CTable_Local_mdb : public CTable_Local {
  public:
    CTable_Local_mdb();
    ~CTable_Local_mdb() override;

  protected:
    /// Null at first.
    std::unique_ptr<CAdo_Local_mdb> pAdo;
};
