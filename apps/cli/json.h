#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace ktl::cli {

/// Builds one JSON text from front to back, indented. Inside an object every value has a name; inside an
/// array none.
class JsonWriter {
  public:
    JsonWriter &BeginObject(std::string_view name = {});
    JsonWriter &BeginArray(std::string_view name = {});
    JsonWriter &End();
    /// Bytes that are no UTF-8 become U+FFFD.
    JsonWriter &Text(std::string_view name, std::string_view value);
    JsonWriter &Number(std::string_view name, long long value);
    /// With as few digits as give the same double back; null for what is not finite.
    JsonWriter &Real(std::string_view name, double value);

    /// A number in JSON's own form.
    JsonWriter &Digits(std::string_view name, std::string_view number);
    JsonWriter &Bool(std::string_view name, bool value);
    JsonWriter &Null(std::string_view name);

    /// The text and an end of line, once everything is ended.
    const std::string &Result() const { return m_text; }
    /// What has come since the last call, for a text that is too long to be held.
    std::string Take() { return std::exchange(m_text, {}); }

  private:
    JsonWriter &Begin(std::string_view name, char open, char close);
    void StartValue(std::string_view name);
    void NewLine();
    void AppendQuoted(std::string_view text);

    std::string m_text;
    std::string m_closers;
    bool m_first = true;
};

}  // namespace ktl::cli
