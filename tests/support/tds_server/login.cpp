#include "tests/support/tds_server/login.h"

#include <iterator>

#include "tests/support/tds_server/bytes.h"

namespace ktl::test::tds {
namespace {

/// Where LOGIN7 keeps the place and the length of its texts.
enum LoginField : std::size_t { kUser = 40, kPassword = 44, kDatabase = 68 };

std::string_view FieldBytes(std::string_view message, LoginField field) {
    ByteReader reader(message);
    reader.Seek(field);
    const std::uint16_t place = reader.U16();
    const std::uint16_t units = reader.U16();
    reader.Seek(place);
    return reader.Bytes(2u * units);
}

/// A password's bytes have their halves swapped and are then mixed with 0xA5.
std::string PlainPassword(std::string_view hidden) {
    std::string plain;
    for (const char c : hidden) {
        const unsigned byte = static_cast<std::uint8_t>(c) ^ 0xA5u;
        plain += static_cast<char>((byte >> 4 | byte << 4) & 0xFF);
    }
    return plain;
}

void PutBigEndian(ByteWriter &writer, std::size_t value) {
    writer.U8(static_cast<unsigned>(value >> 8));
    writer.U8(static_cast<unsigned>(value & 0xFF));
}

}  // namespace

std::string AnswerPrelogin() {
    struct Option {
        unsigned token;
        std::string_view value;
    };
    constexpr unsigned kEnd = 0xFF;
    // Version 11.0.3000, encryption not supported, the only instance, no thread number, one result at a time.
    static constexpr Option kOptions[] = {{0, std::string_view("\x0B\x00\x0B\xB8\x00\x00", 6)},
                                          {1, std::string_view("\x02", 1)},
                                          {2, std::string_view("\x00", 1)},
                                          {3, std::string_view()},
                                          {4, std::string_view("\x00", 1)}};
    ByteWriter writer;
    std::size_t place = 5 * std::size(kOptions) + 1;
    for (const Option &option : kOptions) {
        writer.U8(option.token);
        PutBigEndian(writer, place);
        PutBigEndian(writer, option.value.size());
        place += option.value.size();
    }
    writer.U8(kEnd);
    for (const Option &option : kOptions) writer.Bytes(option.value);
    return writer.Take();
}

Login ParseLogin(std::string_view message) {
    return {Utf8FromUtf16(FieldBytes(message, kUser)), Utf8FromUtf16(PlainPassword(FieldBytes(message, kPassword))),
            Utf8FromUtf16(FieldBytes(message, kDatabase))};
}

}  // namespace ktl::test::tds
