#include "common/source/source_utilities/uString.h"

#include <cstdio>
#include <cstring>

namespace MORA_LUX {

uString::error::error(const std::string& message) : std::runtime_error(message) {}

uString::error::~error() = default;

bool uString::NumericStart(const char* text, std::ios_base::fmtflags& base, const char*& digits)
{
    if (text == nullptr)
        throw error("unable to convert null string to numeric");
    if (text[0] == '\0')
        throw error("unable to convert empty string to numeric");
    base = std::ios_base::dec;
    digits = text;
    if (text[0] != '0')
        return true;
    if (text[1] == '\0')
        return false;
    if (text[1] == 'x' || text[1] == 'X') {
        if (text[2] == '\0')
            return false;
        base = std::ios_base::hex;
        digits = text + 2;
        return true;
    }
    base = std::ios_base::oct;
    digits = text + 1;
    return true;
}

bool uString::ToBool(const char* text)
{
    if (text == nullptr)
        throw error("unable to convert null string to boolean");
    if (text[0] == '\0')
        throw error("unable to convert empty string to boolean");
    const std::string value(text);
    if (value == "true" || value == "TRUE" || value == "True")
        return true;
    if (value == "false" || value == "FALSE" || value == "False")
        return false;
    throw error("unable to convert \"" + value + "\" to boolean");
}

std::string& uString::FromBool(bool value, std::string& out, bool append)
{
    if (!append)
        out.clear();
    out += value ? "true" : "false";
    return out;
}

std::string& uString::FromBool(std::string& out, bool value)
{
    return FromBool(value, out, true);
}

namespace {

template <typename T>
std::string& FormatInto(std::string& out, bool append, const char* format, T value)
{
    char text[1024];
    const int length = std::snprintf(text, sizeof text, format, value);
    if (length < 0)
        text[0] = '\0';
    if (!append)
        out.clear();
    out += text;
    return out;
}

struct Prefix
{
    double factor;
    const char* name;
    const char* symbol;
};

} // namespace

std::string& uString::FromLong(long value, std::string& out, bool append, const char* format)
{
    // "%ld" prints the same as "%d" for every value of a 32-bit long and stays
    // correct where long is wider.
    return FormatInto(out, append, format != nullptr ? format : "%ld", value);
}

std::string& uString::FromLong(std::string& out, long value, const char* format)
{
    return FromLong(value, out, true, format);
}

std::string& uString::FromDouble(double value, std::string& out, bool append, const char* format)
{
    return FormatInto(out, append, format != nullptr ? format : "%f", value);
}

std::string& uString::FromDouble(std::string& out, double value, const char* format)
{
    return FromDouble(value, out, true, format);
}

std::string& uString::FromDoubleInEngrUnits(double value, std::string& out, bool append,
                                            const char* format, bool abbreviated)
{
    static const Prefix prefixes[] = {
        {uEngineeringUnits::yotta, "yotta", "Y"}, {uEngineeringUnits::zetta, "zetta", "Z"},
        {uEngineeringUnits::exa, "exa", "E"},     {uEngineeringUnits::peta, "peta", "P"},
        {uEngineeringUnits::tera, "tera", "T"},   {uEngineeringUnits::giga, "giga", "G"},
        {uEngineeringUnits::mega, "mega", "M"},   {uEngineeringUnits::kilo, "kilo", "k"},
        {1.0, "", ""},
        {uEngineeringUnits::milli, "milli", "m"}, {uEngineeringUnits::micro, "micro", "u"},
        {uEngineeringUnits::nano, "nano", "n"},   {uEngineeringUnits::pico, "pico", "p"},
        {uEngineeringUnits::femto, "femto", "f"}, {uEngineeringUnits::atto, "atto", "a"},
        {uEngineeringUnits::zepto, "zepto", "z"}, {uEngineeringUnits::yocto, "yocto", "y"},
    };
    for (const Prefix& prefix : prefixes) {
        if (prefix.factor <= value) {
            FromDouble(value / prefix.factor, out, append, format);
            out += abbreviated ? prefix.symbol : prefix.name;
            return out;
        }
    }
    // Below the smallest prefix (also 0, negatives and NaN): the plain value.
    return FromDouble(value, out, append, format);
}

std::string& uString::FromDoubleInEngrUnits(std::string& out, double value, const char* format, bool abbreviated)
{
    return FromDoubleInEngrUnits(value, out, true, format, abbreviated);
}

long uString::ToLong(const char* text)
{
    return ToNumeric<long>(text);
}

long long uString::ToInt64(const char* text)
{
    return ToNumeric<long long>(text);
}

double uString::ToDouble(const char* text)
{
    return ToNumeric<double>(text);
}

int uString::Split(const char* text, std::string& first, std::string& rest, const char* delimiter)
{
    if (text == nullptr)
        throw error("unable to split null string");
    if (delimiter == nullptr)
        throw error("unable to split with null delimeter");
    const std::string whole(text);
    // An empty delimiter would match before every character without consuming
    // any, so a repeated split could never end: it matches nowhere instead.
    const std::string::size_type at = *delimiter == '\0' ? std::string::npos : whole.find(delimiter);
    if (at != std::string::npos) {
        first = whole.substr(0, at);
        rest = whole.substr(at + std::strlen(delimiter));
        return 2;
    }
    first = whole;
    rest.clear();
    return whole.empty() ? 0 : 1;
}

int uString::Split(std::vector<std::string>& parts, const char* text, const char* delimiter)
{
    std::string first;
    std::string rest;
    std::string remaining;
    const char* next = text;
    while (Split(next, first, rest, delimiter) != 0) {
        parts.push_back(first);
        remaining.swap(rest);
        next = remaining.c_str();
    }
    return static_cast<int>(parts.size());
}

std::string& uString::Replace(std::string& text, const char* from, const char* to)
{
    if (from == nullptr)
        throw error("unable to perform string replacement from null original text");
    if (to == nullptr)
        throw error("unable to perform string replacement with null replacement text");
    const std::string::size_type fromLength = std::strlen(from);
    const std::string::size_type toLength = std::strlen(to);
    if (fromLength == 0)
        return text;
    std::string::size_type insertedEnd = 0;
    std::string::size_type at = text.find(from);
    while (at != std::string::npos) {
        // The scan resumes after the length of `from`, so it may run into the
        // text just inserted. A match lying wholly inside it would recur at the
        // same offset forever; skip to the end of the inserted text instead.
        if (at + fromLength <= insertedEnd) {
            at = text.find(from, insertedEnd);
            continue;
        }
        text.replace(at, fromLength, to);
        insertedEnd = at + toLength;
        at = text.find(from, at + fromLength);
    }
    return text;
}

std::string& uString::StripLeading(std::string& text, const char* characters)
{
    if (characters != nullptr)
        text.erase(0, text.find_first_not_of(characters));
    return text;
}

std::string& uString::StripTrailing(std::string& text, const char* characters)
{
    if (characters != nullptr) {
        const std::string::size_type last = text.find_last_not_of(characters);
        text.erase(last == std::string::npos ? 0 : last + 1);
    }
    return text;
}

uEngineeringUnits::~uEngineeringUnits() = default;

const double uEngineeringUnits::yotta = 1e24;
const double uEngineeringUnits::zetta = 1e21;
const double uEngineeringUnits::exa = 1e18;
const double uEngineeringUnits::peta = 1e15;
const double uEngineeringUnits::tera = 1e12;
const double uEngineeringUnits::giga = 1e9;
const double uEngineeringUnits::mega = 1e6;
const double uEngineeringUnits::kilo = 1e3;
const double uEngineeringUnits::milli = 1e-3;
const double uEngineeringUnits::micro = 1e-6;
const double uEngineeringUnits::nano = 1e-9;
const double uEngineeringUnits::pico = 1e-12;
const double uEngineeringUnits::femto = 1e-15;
const double uEngineeringUnits::atto = 1e-18;
const double uEngineeringUnits::zepto = 1e-21;
const double uEngineeringUnits::yocto = 1e-24;
const double uEngineeringUnits::kibi = 1024.0;
const double uEngineeringUnits::mebi = 1048576.0;
const double uEngineeringUnits::gibi = 1073741824.0;
const double uEngineeringUnits::tebi = 1099511627776.0;
const double uEngineeringUnits::pebi = 1125899906842624.0;
const double uEngineeringUnits::exbi = 1152921504606846976.0;
const double uEngineeringUnits::zebi = 1180591620717411303424.0;
const double uEngineeringUnits::yobi = 1208925819614629174706176.0;

} // namespace MORA_LUX
