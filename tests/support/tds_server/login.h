#pragma once

#include <string>
#include <string_view>

namespace ktl::test::tds {

/// The answer to the driver's first message: this server's version and that it doesn't encrypt.
std::string AnswerPrelogin();

/// What a LOGIN7 message asks for.
struct Login {
    std::string user;
    std::string password;
    std::string database;
};
/// Throws ProtocolError.
Login ParseLogin(std::string_view message);

}  // namespace ktl::test::tds
