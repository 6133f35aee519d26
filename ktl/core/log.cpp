#include "ktl/core/log.h"

#include <cstdio>
#include <memory>

#include "ktl/core/utility.h"
#include "ktl/platform/date_time.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/exception.h"
#include "ktl/platform/file.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/message_box.h"

namespace {

constexpr UINT kQuestionStyle = 0x24;
constexpr int kShow = 5;

CString EntryText(int code, const CString &message) {
    CString entry;
    entry.Format(ktl::FromUtf8("异常:%.6d\n%s\n%s\n\n"), code, message.GetString(),
                 CTime::GetCurrentTime().Format("%Y-%m-%d %H:%M:%S").GetString());
    return entry;
}

void Append(const CString &path, const CString &entry) {
    CFile file;
    if (!file.Open(path, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite | CFile::shareDenyNone))
        return;
    file.SeekToEnd();
    file.Write(entry.GetString(), static_cast<UINT>(entry.GetLength()));
}

}  // namespace

void KtlWriteLog(int code, CString message, int prompt) {
    const CString path = KtlGetAppPathName() + "\\error.log";
    try {
        Append(path, EntryText(code, message));
    } catch (const CException &) {
        // A log that can't be written has nowhere to say so.
    }
    if (!prompt) return;
    CString question;
    question.Format("Inner Error:%d,view the error log?", code);
    if (AfxMessageBox(question, kQuestionStyle) == IDYES) {
        ShellExecute(nullptr, "open", path, nullptr, nullptr, kShow);
    }
}

CString KtlCatchError(int code, int prompt) {
    const CString text = ktl::ErrorText(GetLastError());
    if (code > 0) KtlWriteLog(code, text, prompt);
    return text;
}

void KtlShowException(CException *exception) {
    char buffer[255] = "";
    exception->GetErrorMessage(buffer, sizeof buffer);
    CString text;
    text.Format("%s", buffer);
    KtlWriteLog(1, text, 1);
}
