#include "ktl/core/log.h"

#include "ktl/core/paths.h"
#include "ktl/platform/date_time.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/file.h"
#include "ktl/platform/last_error.h"
#include "ktl/platform/message_box.h"

namespace {

CString EntryText(int code, const CString &message) {
    const CString time = CTime::GetCurrentTime().Format("%Y-%m-%d %H:%M:%S");
    CString entry;
    entry.Format(ktl::FromUtf8("异常:%.6d\n%s\n%s\n\n"), code, message.GetString(), time.GetString());
    return entry;
}

/// Line ends are LF: the log is for this machine's viewer.
void Append(const CString &path, const CString &entry) {
    CFile file;
    if (!file.Open(path, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite | CFile::shareDenyNone)) {
        return;
    }
    file.SeekToEnd();
    file.Write(entry.GetString(), static_cast<UINT>(entry.GetLength()));
    file.Close();
}

}  // namespace

void KtlWriteLog(int code, CString message, int prompt) {
    const CString path = KtlGetAppPathName() + "\\error.log";
    try {
        Append(path, EntryText(code, message));
    } catch (const CException &) {
        // A log that cannot be written has no place to say so.
    }
    if (prompt != 0 && AfxMessageBox(ktl::LogQuestion(code), MB_YESNO | MB_ICONQUESTION) == IDYES) {
        ShellExecute(nullptr, "open", path, nullptr, nullptr, SW_SHOW);
    }
}

CString KtlCatchError(int code, int prompt) {
    CString text = ktl::ErrorText(GetLastError());
    if (code > 0) KtlWriteLog(code, text, prompt);
    return text;
}

void KtlShowException(CException *exception) {
    char buffer[255] = {};
    if (exception != nullptr) exception->GetErrorMessage(buffer, sizeof buffer);
    CString text;
    text.Format("%s", buffer);
    KtlWriteLog(1, text, 1);
}

namespace ktl {

CString LogQuestion(int code, Language language) {
    CString question;
    if (language == Language::Chinese) {
        question.Format(FromUtf8("异常:%.6d,是否需要查看错误日志?"), code);
    } else {
        question.Format("Inner Error:%d,view the error log?", code);
    }
    return question;
}

}  // namespace ktl
