#pragma once

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/support/scratch_folder.h"

namespace ktl::test {

/// A locale that writes a comma for the decimal point, in force while it lives. It is made for the occasion, since a
/// machine may have none.
class CommaLocale {
  public:
    CommaLocale() {
        m_folder.Write("comma.src",
                       "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n");
        const std::string command =
            "localedef -c -i " + m_folder.Path("comma.src") + " " + m_folder.Path("comma") + " >/dev/null 2>&1";
        // The missing other categories make its answer 1.
        if (std::system(command.c_str()) == -1) return;
        ::setenv("LOCPATH", m_folder.Path().c_str(), 1);
        std::setlocale(LC_NUMERIC, "comma");
        ::unsetenv("LOCPATH");
    }
    CommaLocale(const CommaLocale &) = delete;
    CommaLocale &operator=(const CommaLocale &) = delete;
    ~CommaLocale() { std::setlocale(LC_NUMERIC, "C"); }

    /// False when the machine cannot make it: the test must skip.
    bool IsInForce() const { return *std::localeconv()->decimal_point == ','; }

  private:
    ScratchFolder m_folder;
};

}  // namespace ktl::test
