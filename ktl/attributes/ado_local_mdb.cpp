#include "ktl/attributes/ado_local_mdb.h"

#include "ktl/attributes/ado_guard.h"
#include "ktl/core/log.h"
#include "ktl/platform/ado/error.h"
#include "ktl/platform/encoding.h"

namespace {

constexpr int kConnectionTimeout = 5000;

/// A store that this build lacks is told by its number, any other fault by its description.
void LogFailure(const ktl::ado::Error &error) {
    if (error.GetNumber() != ktl::ado::error_number::kNoProvider) {
        ktl::LogStoreFault(error, CString());
        return;
    }
    CString text;
    text.Format(ktl::FromUtf8("[%d]连接数据库失败。"), error.GetNumber());
    KtlWriteLog(ktl::kStoreFaultCode, text, 1);
}

}  // namespace

int CAdo_Local_mdb::ConnDB(CString file) {
    if (GetConnection()) return 1;
    strDBPath = file;
    return ktl::GuardStore(CString(), 0, [&] {
        try {
            SetConnection(ktl::ado::Connection::Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source = " + file));
        } catch (const ktl::ado::Error &error) {
            LogFailure(error);
            return 0;
        }
        GetConnection()->SetConnectionTimeout(kConnectionTimeout);
        return 1;
    });
}
