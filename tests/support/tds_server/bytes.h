#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ktl::test::tds {

/// A message that does not follow the protocol; ends the connection.
struct ProtocolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string Utf8FromUtf16(std::string_view littleEndian);
/// Little-endian bytes.
std::string Utf16FromUtf8(std::string_view utf8);

/// Takes a message apart; every step beyond its end throws ProtocolError. Numbers are little-endian.
class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    std::size_t Left() const { return m_bytes.size() - m_at; }
    bool AtEnd() const { return Left() == 0; }
    void Seek(std::size_t position) {
        if (position > m_bytes.size()) throw ProtocolError("position outside of the message");
        m_at = position;
    }
    std::string_view Bytes(std::size_t count) {
        if (count > Left()) throw ProtocolError("message too short");
        m_at += count;
        return m_bytes.substr(m_at - count, count);
    }
    std::uint8_t Peek() const { return AtEnd() ? 0 : static_cast<std::uint8_t>(m_bytes[m_at]); }

    std::uint64_t Unsigned(int bytes);
    /// Sign-extended.
    std::int64_t Signed(int bytes);
    std::uint8_t U8() { return static_cast<std::uint8_t>(Unsigned(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Unsigned(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Unsigned(4)); }
    std::int32_t I32() { return static_cast<std::int32_t>(Signed(4)); }
    /// UTF-8 from a count of UTF-16 units and the units.
    std::string Utf16(std::size_t units) { return Utf8FromUtf16(Bytes(2 * units)); }

  private:
    std::string_view m_bytes;
    std::size_t m_at = 0;
};

/// Builds a message; the counterpart of ByteReader.
class ByteWriter {
  public:
    void Unsigned(std::uint64_t value, int bytes);
    void U8(unsigned value) { Unsigned(value, 1); }
    void U16(std::size_t value) { Unsigned(value, 2); }
    void U32(std::uint64_t value) { Unsigned(value, 4); }
    void I32(std::int64_t value) { Unsigned(static_cast<std::uint64_t>(value), 4); }
    void U64(std::uint64_t value) { Unsigned(value, 8); }
    void Bytes(std::string_view bytes) { m_bytes += bytes; }
    /// Text as UTF-16 behind its count of units in one or two bytes.
    void ShortText(std::string_view utf8);
    void LongText(std::string_view utf8);

    std::string Take() { return std::move(m_bytes); }
    const std::string &View() const { return m_bytes; }

  private:
    std::string m_bytes;
};

}  // namespace ktl::test::tds
