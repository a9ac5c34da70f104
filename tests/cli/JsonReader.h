// A strict little JSON reader for checking the tool's output: anything that
// is not valid JSON throws, so malformed output fails the test that reads it.
#ifndef DEVID_TESTS_CLI_JSONREADER_H
#define DEVID_TESTS_CLI_JSONREADER_H

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace devid_test {

struct Json {
    enum class Type { Null, Bool, Number, String, Array, Object };
    Type type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;

    bool isNull() const { return type == Type::Null; }
    bool has(const std::string& key) const
    {
        for (const auto& member : members)
            if (member.first == key)
                return true;
        return false;
    }
    const Json& operator[](const std::string& key) const
    {
        for (const auto& member : members)
            if (member.first == key)
                return member.second;
        throw std::out_of_range("no member " + key);
    }
    const Json& operator[](std::size_t index) const { return items.at(index); }
    std::size_t size() const { return type == Type::Array ? items.size() : members.size(); }
};

class JsonReader {
public:
    static Json Parse(const std::string& text)
    {
        JsonReader reader(text);
        Json value = reader.Value();
        reader.Space();
        if (reader.m_pos != text.size())
            reader.Fail("trailing text");
        return value;
    }

private:
    explicit JsonReader(const std::string& text) : m_text(text) {}

    [[noreturn]] void Fail(const std::string& what) const
    {
        throw std::runtime_error("bad JSON at " + std::to_string(m_pos) + ": " + what);
    }
    void Space()
    {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\n' || m_text[m_pos] == '\t' ||
                                         m_text[m_pos] == '\r'))
            ++m_pos;
    }
    char Peek()
    {
        Space();
        if (m_pos >= m_text.size())
            Fail("unexpected end");
        return m_text[m_pos];
    }
    void Expect(char c)
    {
        if (Peek() != c)
            Fail(std::string("expected ") + c);
        ++m_pos;
    }
    bool Literal(const char* word)
    {
        const std::string w(word);
        if (m_text.compare(m_pos, w.size(), w) != 0)
            return false;
        m_pos += w.size();
        return true;
    }

    Json Value()
    {
        Json value;
        const char c = Peek();
        if (c == '{') {
            value.type = Json::Type::Object;
            ++m_pos;
            if (Peek() == '}') {
                ++m_pos;
                return value;
            }
            do {
                std::string key = String();
                Expect(':');
                value.members.emplace_back(std::move(key), Value());
            } while (Peek() == ',' && ++m_pos);
            Expect('}');
        } else if (c == '[') {
            value.type = Json::Type::Array;
            ++m_pos;
            if (Peek() == ']') {
                ++m_pos;
                return value;
            }
            do
                value.items.push_back(Value());
            while (Peek() == ',' && ++m_pos);
            Expect(']');
        } else if (c == '"') {
            value.type = Json::Type::String;
            value.text = String();
        } else if (Literal("true")) {
            value.type = Json::Type::Bool;
            value.boolean = true;
        } else if (Literal("false")) {
            value.type = Json::Type::Bool;
        } else if (Literal("null")) {
            value.type = Json::Type::Null;
        } else {
            value.type = Json::Type::Number;
            const char* start = m_text.c_str() + m_pos;
            char* end = nullptr;
            value.number = std::strtod(start, &end);
            if (end == start || (*start != '-' && (*start < '0' || *start > '9')))
                Fail("not a value");
            m_pos += static_cast<std::size_t>(end - start);
        }
        return value;
    }

    unsigned Hex4()
    {
        if (m_pos + 4 > m_text.size())
            Fail("short \\u escape");
        unsigned code = 0;
        for (int i = 0; i < 4; ++i) {
            const char h = m_text[m_pos++];
            code <<= 4;
            if (h >= '0' && h <= '9')
                code |= static_cast<unsigned>(h - '0');
            else if (h >= 'a' && h <= 'f')
                code |= static_cast<unsigned>(h - 'a' + 10);
            else if (h >= 'A' && h <= 'F')
                code |= static_cast<unsigned>(h - 'A' + 10);
            else
                Fail("bad hex digit");
        }
        return code;
    }

    static void AppendUtf8(std::string& out, uint32_t code)
    {
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }

    std::string String()
    {
        Expect('"');
        std::string out;
        for (;;) {
            if (m_pos >= m_text.size())
                Fail("unterminated string");
            const char c = m_text[m_pos++];
            if (c == '"')
                return out;
            if (static_cast<unsigned char>(c) < 0x20)
                Fail("raw control character in a string");
            if (c != '\\') {
                out += c;
                continue;
            }
            if (m_pos >= m_text.size())
                Fail("unterminated escape");
            const char e = m_text[m_pos++];
            switch (e) {
            case '"': out += '"'; break;
            case '\\': out += '\\'; break;
            case '/': out += '/'; break;
            case 'b': out += '\b'; break;
            case 'f': out += '\f'; break;
            case 'n': out += '\n'; break;
            case 'r': out += '\r'; break;
            case 't': out += '\t'; break;
            case 'u': {
                uint32_t code = Hex4();
                if (code >= 0xD800 && code <= 0xDBFF) {
                    if (!Literal("\\u"))
                        Fail("lone high surrogate");
                    const uint32_t low = Hex4();
                    if (low < 0xDC00 || low > 0xDFFF)
                        Fail("bad low surrogate");
                    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                }
                AppendUtf8(out, code);
                break;
            }
            default: Fail("unknown escape");
            }
        }
    }

    const std::string& m_text;
    std::size_t m_pos = 0;
};

} // namespace devid_test

#endif
