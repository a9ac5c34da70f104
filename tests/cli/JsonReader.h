// A strict little JSON reader for checking the tool's output: anything that is
// not valid JSON throws, so malformed output fails the test that reads it.
#ifndef DEVID_TESTS_CLI_JSONREADER_H
#define DEVID_TESTS_CLI_JSONREADER_H

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace devid_test {

struct Json {
    enum class Type { Null, Bool, Number, String, Array, Object } type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;

    bool isNull() const { return type == Type::Null; }
    bool has(const std::string& key) const { return find(key) != nullptr; }
    const Json& operator[](const std::string& key) const
    {
        return find(key) != nullptr ? *find(key) : throw std::out_of_range("no member " + key);
    }
    const Json& operator[](std::size_t index) const { return items.at(index); }
    std::size_t size() const { return type == Type::Array ? items.size() : members.size(); }
    const Json* find(const std::string& key) const
    {
        for (const auto& member : members)
            if (member.first == key)
                return &member.second;
        return nullptr;
    }
};

class JsonReader {
public:
    static Json Parse(const std::string& text)
    {
        JsonReader reader{text};
        Json value = reader.Value();
        reader.Eat(' ');
        reader.Need(reader.m_pos == text.size());
        return value;
    }

private:
    explicit JsonReader(const std::string& text) : m_text(text) {}
    void Need(bool ok) const
    {
        if (!ok)
            throw std::runtime_error("bad JSON at " + std::to_string(m_pos));
    }
    // Skips white space, then takes `c` if it comes next.
    bool Eat(char c)
    {
        m_pos = std::min(m_text.size(), m_text.find_first_not_of(" \n\t\r", m_pos));
        if (m_pos == m_text.size() || m_text[m_pos] != c)
            return false;
        ++m_pos;
        return true;
    }
    bool Word(const std::string& word)
    {
        if (m_text.compare(m_pos, word.size(), word) != 0)
            return false;
        m_pos += word.size();
        return true;
    }

    Json Value()
    {
        Json value;
        if (Eat('{') || Eat('[')) {
            const bool object = m_text[m_pos - 1] == '{';
            value.type = object ? Json::Type::Object : Json::Type::Array;
            if (Eat(object ? '}' : ']'))
                return value;
            do {
                if (!object) {
                    value.items.push_back(Value());
                    continue;
                }
                std::string key = String();
                Need(Eat(':'));
                value.members.emplace_back(std::move(key), Value());
            } while (Eat(','));
            Need(Eat(object ? '}' : ']'));
        } else if (m_pos < m_text.size() && m_text[m_pos] == '"') {
            value.type = Json::Type::String;
            value.text = String();
        } else if (Word("true") || Word("false")) {
            value.type = Json::Type::Bool;
            value.boolean = m_text.compare(m_pos - 4, 4, "true") == 0;
        } else if (!Word("null")) {
            const char* start = m_text.c_str() + m_pos;
            char* end = nullptr;
            value.type = Json::Type::Number;
            value.number = std::strtod(start, &end);
            Need(end != start && (*start == '-' || std::isdigit(static_cast<unsigned char>(*start))));
            m_pos += static_cast<std::size_t>(end - start);
        }
        return value;
    }

    // The tool writes valid UTF-8 as it is and escapes single code units only.
    std::string String()
    {
        Need(Eat('"'));
        std::string out;
        for (;;) {
            Need(m_pos < m_text.size());
            const char c = m_text[m_pos++];
            if (c == '"')
                return out;
            Need(static_cast<unsigned char>(c) >= 0x20);
            if (c != '\\') {
                out += c;
                continue;
            }
            const char* escapes = "\"\\/bfnrt";
            const char* known = std::strchr(escapes, m_text[m_pos++]);
            if (known != nullptr && *known != '\0') {
                out += "\"\\/\b\f\n\r\t"[known - escapes];
                continue;
            }
            // Only control characters and single bytes taken as Latin-1 are written as \u.
            const std::string hex = m_text.substr(m_pos, 4);
            Need(m_text[m_pos - 1] == 'u' && hex.size() == 4 && hex.compare(0, 2, "00") == 0 &&
                 hex.find_first_not_of("0123456789abcdef") == std::string::npos);
            m_pos += 4;
            const unsigned code = static_cast<unsigned>(std::stoul(hex, nullptr, 16));
            if (code < 0x80)
                out += static_cast<char>(code);
            else
                out += {static_cast<char>(0xC0 | (code >> 6)), static_cast<char>(0x80 | (code & 0x3F))};
        }
    }

    const std::string& m_text;
    std::size_t m_pos = 0;
};

} // namespace devid_test

#endif
