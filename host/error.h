#pragma once

#include <stdexcept>
#include <string>

namespace ktl::host {

/// Something that a person can mend: a file, an option, a full disk. The text is one UTF-8 line for that person.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Thrown where a progress callback asked to stop.
class Interrupted : public Error {
  public:
    Interrupted() : Error("interrupted") {}
};

}  // namespace ktl::host
