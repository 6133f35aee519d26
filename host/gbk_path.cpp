#include "host/gbk_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/error.h"
#include "ktl/platform/encoding.h"

namespace ktl::host {

bool IsGbk(const std::string &utf8) {
    int replaced = 0;
    FromUtf8(utf8, &replaced);
    return replaced == 0;
}

GbkPath::GbkPath(const std::string &path) {
    std::string name = std::filesystem::absolute(path).lexically_normal().string();
    if (!IsGbk(name)) {
        m_file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_file < 0) throw Error("cannot read '" + path + "': " + std::strerror(errno));
        name = "/proc/self/fd/" + std::to_string(m_file);
    }
    m_name = FromUtf8(name);
}

GbkPath::~GbkPath() {
    if (m_file >= 0) close(m_file);
}

}  // namespace ktl::host
