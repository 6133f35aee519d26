#include "ktl/platform/ado/dbase/beside.h"

#include "ktl/platform/encoding.h"
#include "ktl/platform/filesystem.h"

namespace ktl::ado::dbase {

std::string WithExtension(const std::string &path, const char *extension) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind('/');
    const bool has = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    return path.substr(0, has ? dot : path.size()) + extension;
}

std::string FindBeside(const std::string &path, const char *extension) {
    const std::string found = ExistingPath(WithExtension(path, extension));
    FileInfo info;
    return FileSystem::Current().Stat(found, info) == 0 && !info.isFolder ? found : std::string();
}

CString TableNameOf(const std::string &path) {
    const std::string bare = WithExtension(path, "");
    return FromUtf8(bare.substr(bare.rfind('/') + 1));
}

}  // namespace ktl::ado::dbase
