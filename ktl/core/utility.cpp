#include "ktl/core/utility.h"

#include <cstdlib>

#include "ktl/platform/date_time.h"
#include "ktl/platform/parse.h"

int KtlParseURL(const char *url, CString &host, CString &path, unsigned short &port) {
    CString text(url);
    text.Trim();
    host.Empty();
    path.Empty();
    const int mark = text.Find("://");
    if (mark < 0) return 0;
    if (text.Left(mark + 3).MakeLower() != CString("http://")) return 0;
    text = text.Mid(mark + 3);
    const int slash = text.Find("/");
    if (slash < 0) return 0;
    path = text.Mid(slash);
    host = text.Left(slash);
    const int colon = host.Find(":");
    if (colon < 0) {
        port = 80;
    } else {
        port = static_cast<unsigned short>(ktl::ParseInt(host.Mid(colon + 1).View()));
        host = host.Left(colon);
    }
    return 1;
}

COLORREF KtlGetRandomColor() {
    std::srand(static_cast<unsigned>(ktl::Now()));
    const auto component = [] { return static_cast<unsigned>(std::rand()) % 256; };
    const unsigned red = component();
    const unsigned green = component();
    const unsigned blue = component();
    return RGB(red, green, blue);
}
