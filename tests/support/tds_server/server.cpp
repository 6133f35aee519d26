#include "tests/support/tds_server/server.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <stdexcept>

#include "tests/support/tds_server/session.h"

namespace ktl::test {
namespace {

constexpr std::size_t kMaxConnections = 16;
constexpr int kSendSeconds = 10;
using Clock = std::chrono::steady_clock;

int Require(int result, const char *what) {
    if (result < 0) throw std::runtime_error(std::string("test server: ") + what);
    return result;
}

/// A driver that stops reading fails the send after a while rather than holding the thread.
bool SendAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

}  // namespace

struct TdsServer::Shared {
    tds::ServerState state;
};

struct TdsServer::Peer {
    Peer(int descriptor, tds::ServerState &server) : socket(descriptor), session(server) {}

    Handle socket;
    tds::MessageReader reader;
    tds::Session session;
    /// An answer that waits for its time.
    std::string held;
    Clock::time_point due;
};

TdsServer::Handle::~Handle() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

TdsServer::TdsServer(const std::string &user, const std::string &password, const std::vector<std::string> &databases,
                     int port)
    : m_listener(Require(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")),
      m_wake(Require(::eventfd(0, EFD_CLOEXEC), "eventfd")),
      m_shared(std::make_unique<Shared>()) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int yes = 1;
    ::setsockopt(m_listener.Get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    socklen_t size = sizeof address;
    Require(::bind(m_listener.Get(), reinterpret_cast<sockaddr *>(&address), size), "bind");
    Require(::listen(m_listener.Get(), static_cast<int>(kMaxConnections)), "listen");
    Require(::getsockname(m_listener.Get(), reinterpret_cast<sockaddr *>(&address), &size), "getsockname");
    m_port = ntohs(address.sin_port);
    tds::ServerState &state = m_shared->state;
    state.user = user;
    state.password = password;
    for (const std::string &name : databases) state.databases.Add(name);
    state.onStatement = [this](const std::string &statement) {
        const std::lock_guard lock(m_mutex);
        m_statements.push_back(statement);
    };
    m_thread = std::thread([this] { Serve(); });
}

TdsServer::~TdsServer() {
    m_stop = true;
    Wake();
    m_thread.join();
}

std::vector<std::string> TdsServer::Statements() const {
    const std::lock_guard lock(m_mutex);
    return m_statements;
}

void TdsServer::DropConnections() {
    Wake();
}

void TdsServer::Wake() {
    ::eventfd_write(m_wake.Get(), 1);
}

void TdsServer::Serve() {
    for (;;) {
        std::vector<pollfd> waits{{m_wake.Get(), POLLIN, 0}, {m_listener.Get(), POLLIN, 0}};
        for (const auto &peer : m_peers) waits.push_back({peer->socket.Get(), POLLIN, 0});
        if (::poll(waits.data(), waits.size(), SendDue()) < 0 && errno != EINTR) return;
        // First, so that nothing that is sent after a wake is served.
        if (eventfd_t count = 0; waits[0].revents && ::eventfd_read(m_wake.Get(), &count) == 0) {
            m_peers.clear();
            if (m_stop) return;
            continue;
        }
        for (std::size_t i = m_peers.size(); i-- > 0;) {
            if (waits[i + 2].revents && !Read(*m_peers[i])) m_peers.erase(m_peers.begin() + i);
        }
        if (waits[1].revents) Accept();
    }
}

void TdsServer::Accept() {
    const int descriptor = ::accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0) return;
    if (m_peers.size() >= kMaxConnections) {
        ::close(descriptor);
        return;
    }
    const timeval limit{kSendSeconds, 0};
    const int yes = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    m_peers.push_back(std::make_unique<Peer>(descriptor, m_shared->state));
}

bool TdsServer::Read(Peer &peer) {
    char block[65536];
    const ssize_t size = ::recv(peer.socket.Get(), block, sizeof block, 0);
    if (size <= 0) return false;
    try {
        peer.reader.Add({block, static_cast<std::size_t>(size)});
        while (const auto message = peer.reader.Next()) {
            if (!Answer(peer, *message)) return false;
        }
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

/// A message that comes while an answer is held, as a driver's cry to stop, takes the answer's place.
bool TdsServer::Answer(Peer &peer, const tds::Message &message) {
    std::string packets = tds::PacketsOf(peer.session.Answer(message));
    peer.held.clear();
    if (const long long hold = peer.session.HoldMilliseconds(); hold > 0) {
        peer.held = std::move(packets);
        peer.due = Clock::now() + std::chrono::milliseconds(hold);
        return true;
    }
    return SendAll(peer.socket.Get(), packets) && !peer.session.IsOver();
}

int TdsServer::SendDue() {
    std::chrono::milliseconds next(-1);
    for (const auto &peer : m_peers) {
        if (peer->held.empty()) continue;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(peer->due - Clock::now());
        if (left.count() <= 0) {
            SendAll(peer->socket.Get(), std::exchange(peer->held, {}));
        } else if (next.count() < 0 || left < next) {
            next = left;
        }
    }
    return static_cast<int>(next.count());
}

}  // namespace ktl::test
