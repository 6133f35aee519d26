#include "tests/support/tds_server/message.h"

#include <utility>

#include "tests/support/tds_server/bytes.h"

namespace ktl::test::tds {
namespace {

/// A packet's header: kind, state, length with the header (big-endian), four bytes without meaning here.
constexpr std::size_t kHeaderSize = 8;
constexpr std::uint8_t kLastPacket = 0x01;
constexpr std::size_t kMaxMessage = 32 << 20;

}  // namespace

std::optional<Message> MessageReader::Next() {
    std::size_t at = 0;
    std::optional<Message> message;
    while (!message && m_bytes.size() - at >= kHeaderSize) {
        ByteReader header(std::string_view(m_bytes).substr(at, kHeaderSize));
        const std::uint8_t kind = header.U8();
        const std::uint8_t state = header.U8();
        const std::size_t high = header.U8();
        const std::size_t size = high << 8 | header.U8();
        if (size < kHeaderSize) throw ProtocolError("packet too short");
        if (m_bytes.size() - at < size) break;
        m_body.append(m_bytes, at + kHeaderSize, size - kHeaderSize);
        if (m_body.size() > kMaxMessage) throw ProtocolError("message too long");
        at += size;
        if (state & kLastPacket) message = Message{static_cast<MessageKind>(kind), std::exchange(m_body, {})};
    }
    m_bytes.erase(0, at);
    return message;
}

std::string PacketsOf(std::string_view body) {
    ByteWriter writer;
    unsigned number = 1;
    do {
        const std::string_view part = body.substr(0, kPacketSize - kHeaderSize);
        body.remove_prefix(part.size());
        const std::size_t size = part.size() + kHeaderSize;
        writer.U8(static_cast<unsigned>(MessageKind::Answer));
        writer.U8(body.empty() ? kLastPacket : 0);
        writer.U8(static_cast<unsigned>(size >> 8));
        writer.U8(static_cast<unsigned>(size & 0xFF));
        writer.U16(0);
        writer.U8(number++ & 0xFF);
        writer.U8(0);
        writer.Bytes(part);
    } while (!body.empty());
    return writer.Take();
}

}  // namespace ktl::test::tds
