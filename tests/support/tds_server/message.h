#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ktl::test::tds {

/// Kinds of messages, as the first byte of a packet tells them.
enum class MessageKind : std::uint8_t {
    Batch = 0x01,
    Rpc = 0x03,
    Answer = 0x04,
    Attention = 0x06,
    Transaction = 0x0E,
    Login = 0x10,
    Prelogin = 0x12
};

struct Message {
    MessageKind kind;
    std::string body;
};

/// Bytes of a packet that this server sends, and takes at most.
inline constexpr std::size_t kPacketSize = 4096;

/// Joins packets to messages as their bytes arrive.
class MessageReader {
  public:
    void Add(std::string_view bytes) { m_bytes += bytes; }
    /// The next whole message. Throws ProtocolError for a damaged packet or a message of more than 32 MiB.
    std::optional<Message> Next();

  private:
    std::string m_bytes;
    std::string m_body;
};

/// The packets of an answer.
std::string PacketsOf(std::string_view body);

}  // namespace ktl::test::tds
