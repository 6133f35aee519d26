#pragma once

#include "ktl/attributes/ado_local.h"

/// An Access file.
class KTL_API CAdo_Local_mdb : public CAdo_Local {
  public:
    /// Connects to a file; 1 at once when connected already. A failure is logged and gives 0.
    int ConnDB(CString file) override;
};
