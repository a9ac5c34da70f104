#include "cli/JsonWriter.h"

#include "cli/DeviceViews.h"

#include <cstdio>
#include <stdexcept>

namespace devid_cli {

namespace {

// Length of the well-formed UTF-8 sequence starting at text[i], or 0 when the
// bytes there are not one (overlong forms, surrogates and values above
// U+10FFFF count as malformed).
std::size_t Utf8SequenceLength(std::string_view text, std::size_t i)
{
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    uint32_t code = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0Fu;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07u;
    } else {
        return 0;
    }
    if (i + length > text.size())
        return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0u) != 0x80u)
            return 0;
        code = (code << 6) | (byte(i + k) & 0x3Fu);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (overlong || surrogate || code > 0x10FFFF)
        return 0;
    return length;
}

std::string UnicodeEscape(unsigned code)
{
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "\\u%04x", code);
    return buffer;
}

} // namespace

JsonWriter::JsonWriter(std::ostream& out) : m_out(out) {}

std::string JsonWriter::quote(std::string_view text)
{
    std::string result;
    result.reserve(text.size() + 2);
    result += '"';
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const std::size_t length = Utf8SequenceLength(text, i);
            if (length == 0) {
                result += UnicodeEscape(c);
                ++i;
            } else {
                result.append(text.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (c) {
        case '"': result += "\\\""; break;
        case '\\': result += "\\\\"; break;
        case '\b': result += "\\b"; break;
        case '\f': result += "\\f"; break;
        case '\n': result += "\\n"; break;
        case '\r': result += "\\r"; break;
        case '\t': result += "\\t"; break;
        default:
            if (c < 0x20)
                result += UnicodeEscape(c);
            else
                result += static_cast<char>(c);
        }
        ++i;
    }
    result += '"';
    return result;
}

void JsonWriter::newline()
{
    m_out << '\n' << std::string(2 * m_stack.size(), ' ');
}

void JsonWriter::beforeValue()
{
    if (m_stack.empty()) {
        if (m_started)
            throw std::logic_error("JSON: a second top-level value");
        m_started = true;
        return;
    }
    Level& level = m_stack.back();
    if (level.object) {
        if (!level.keyPending)
            throw std::logic_error("JSON: a value in an object needs a key");
        level.keyPending = false;
        return;
    }
    if (!level.empty)
        m_out << ',';
    level.empty = false;
    newline();
}

JsonWriter& JsonWriter::key(std::string_view name)
{
    if (m_stack.empty() || !m_stack.back().object || m_stack.back().keyPending)
        throw std::logic_error("JSON: a key outside an object or after another key");
    Level& level = m_stack.back();
    if (!level.empty)
        m_out << ',';
    level.empty = false;
    level.keyPending = true;
    newline();
    m_out << quote(name) << ": ";
    return *this;
}

JsonWriter& JsonWriter::open(bool object)
{
    beforeValue();
    m_out << (object ? '{' : '[');
    m_stack.push_back(Level{object, true, false});
    return *this;
}

JsonWriter& JsonWriter::close(bool object)
{
    if (m_stack.empty() || m_stack.back().object != object || m_stack.back().keyPending)
        throw std::logic_error("JSON: unbalanced end of object or array");
    const bool empty = m_stack.back().empty;
    m_stack.pop_back();
    if (!empty)
        newline();
    m_out << (object ? '}' : ']');
    if (m_stack.empty())
        m_out << '\n';
    return *this;
}

JsonWriter& JsonWriter::beginObject() { return open(true); }
JsonWriter& JsonWriter::endObject() { return close(true); }
JsonWriter& JsonWriter::beginArray() { return open(false); }
JsonWriter& JsonWriter::endArray() { return close(false); }

JsonWriter& JsonWriter::raw(const std::string& text)
{
    beforeValue();
    m_out << text;
    if (m_stack.empty())
        m_out << '\n';
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view text) { return raw(quote(text)); }
JsonWriter& JsonWriter::value(bool flag) { return raw(flag ? "true" : "false"); }
JsonWriter& JsonWriter::null() { return raw("null"); }

JsonWriter& JsonWriter::hex(uint32_t number) { return value(Hex32(number)); }

} // namespace devid_cli
