#include "ktl/attributes/table_local_mdb.h"

#include "ktl/attributes/ado_local_mdb.h"
#include "ktl/attributes/fields.h"
#include "ktl/attributes/record.h"

CTable_Local_mdb::CTable_Local_mdb() {
    nTableKind = 2;
}

CTable_Local_mdb::~CTable_Local_mdb() = default;
