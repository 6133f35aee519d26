#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ktl::test::tds {
struct Message;
}

namespace ktl::test {

/// A SQL Server for tests: listens on 127.0.0.1 and speaks TDS 7.4 to any driver, from a thread of its own that ends
/// with the object. Its tables are held in memory; "master" exists from the
/// beginning. It takes 16 connections at a time.
///
///     TdsServer server("sa", "secret", {"map"});
///     Connect("127.0.0.1," + std::to_string(server.Port()));
class TdsServer {
  public:
    /// With `port` 0 at a port of the system's choice. Throws std::runtime_error when it cannot listen.
    TdsServer(const std::string &user, const std::string &password, const std::vector<std::string> &databases,
              int port = 0);
    TdsServer(const TdsServer &) = delete;
    TdsServer &operator=(const TdsServer &) = delete;
    ~TdsServer();

    int Port() const { return m_port; }
    /// The texts of all statements so far, in order, as they came.
    std::vector<std::string> Statements() const;
    /// Ends all connections, as a failing network does; new ones are taken.
    void DropConnections();

  private:
    class Handle {
      public:
        explicit Handle(int descriptor = -1) : m_descriptor(descriptor) {}
        Handle(Handle &&other) noexcept : m_descriptor(other.m_descriptor) { other.m_descriptor = -1; }
        Handle &operator=(Handle &&) = delete;
        ~Handle();
        int Get() const { return m_descriptor; }

      private:
        int m_descriptor;
    };
    struct Peer;
    struct Shared;

    void Serve();
    void Accept();
    /// False when the connection is over.
    bool Read(Peer &peer);
    bool Answer(Peer &peer, const tds::Message &message);
    /// Sends the answers that were held back long enough; milliseconds to the next one, -1 without any.
    int SendDue();
    /// Ends all connections in the thread, and the thread when it is to stop.
    void Wake();

    Handle m_listener;
    Handle m_wake;
    std::atomic<bool> m_stop = false;
    int m_port = 0;
    std::unique_ptr<Shared> m_shared;
    std::vector<std::unique_ptr<Peer>> m_peers;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_statements;
    std::thread m_thread;
};

}  // namespace ktl::test
