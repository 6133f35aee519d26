#pragma once

#include <algorithm>
#include <fstream>
#include <string>

namespace ktl::bench {

/// How much memory the process takes at most from the making of this object on, beyond what it took then.
class PeakMemory {
  public:
    PeakMemory() {
        std::ofstream("/proc/self/clear_refs") << "5";
        m_start = Kilobytes("VmRSS:");
    }
    double Megabytes() const { return static_cast<double>(std::max(Kilobytes("VmHWM:") - m_start, 0L)) / 1024.0; }

  private:
    static long Kilobytes(const std::string &key) {
        std::ifstream status("/proc/self/status");
        std::string word;
        long value = 0;
        while (status >> word && word != key) status.ignore(256, '\n');
        status >> value;
        return value;
    }

    long m_start = 0;
};

}  // namespace ktl::bench
