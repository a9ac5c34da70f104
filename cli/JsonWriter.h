// A small streaming JSON writer: nesting, commas and indentation are tracked
// for the caller, and every string is escaped so that the output is valid JSON
// whatever bytes the names hold.
#ifndef DEVID_CLI_JSONWRITER_H
#define DEVID_CLI_JSONWRITER_H

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace devid_cli {

class JsonWriter {
public:
    explicit JsonWriter(std::ostream& out);

    /// Misplaced calls (a key outside an object, a value where a key is due,
    /// an unbalanced end) throw std::logic_error: they are bugs of the caller.
    JsonWriter& beginObject();
    JsonWriter& endObject();
    JsonWriter& beginArray();
    JsonWriter& endArray();
    JsonWriter& key(std::string_view name);

    JsonWriter& value(std::string_view text);
    JsonWriter& value(const char* text) { return value(std::string_view(text)); }
    JsonWriter& value(const std::string& text) { return value(std::string_view(text)); }
    JsonWriter& value(bool flag);
    JsonWriter& null();
    template <typename T, typename = std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>>>
    JsonWriter& value(T number)
    {
        return raw(std::to_string(number));
    }

    /// key(name) followed by value(v).
    template <typename T>
    JsonWriter& field(std::string_view name, const T& v)
    {
        key(name);
        return value(v);
    }

    /// A 32-bit identifier or address as a "0x" string of eight hex digits.
    JsonWriter& hex(uint32_t number);

    /// True once the outermost value is complete.
    bool done() const { return m_started && m_stack.empty(); }

    /// The JSON string literal for `text`, quotes included. Valid UTF-8 passes
    /// through; other bytes above 0x7F are taken as Latin-1 and escaped.
    static std::string quote(std::string_view text);

private:
    struct Level {
        bool object;
        bool empty;
        bool keyPending;
    };

    JsonWriter& raw(const std::string& text);
    void beforeValue();
    JsonWriter& open(bool object);
    JsonWriter& close(bool object);
    void newline();

    std::ostream& m_out;
    std::vector<Level> m_stack;
    bool m_started = false;
};

} // namespace devid_cli

#endif
