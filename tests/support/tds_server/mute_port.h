#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace ktl::test {

/// A port of this machine where nobody answers: bound and, when asked, listening.
class MutePort {
  public:
    explicit MutePort(bool listens) : m_socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), size);
        ::getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size);
        if (listens) ::listen(m_socket, 1);
        m_port = ntohs(address.sin_port);
    }
    MutePort(const MutePort &) = delete;
    MutePort &operator=(const MutePort &) = delete;
    ~MutePort() { ::close(m_socket); }
    std::string Server() const { return "127.0.0.1," + std::to_string(m_port); }

  private:
    int m_socket;
    int m_port = 0;
};

}  // namespace ktl::test
