#pragma once

#include "ktl/attributes/xtable.h"

/// A table in the file system.
class KTL_API CTable_Local : public CXTable {};
