// Static text helpers: splitting, replacing, stripping, and conversions between
// text and booleans or numbers.
#ifndef MORA_LUX_USTRING_H
#define MORA_LUX_USTRING_H

#include <ios>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace MORA_LUX {

class uString
{
public:
    /// What every uString operation throws; carries only its message.
    class error : public std::runtime_error
    {
    public:
        explicit error(const std::string& message);
        virtual ~error();
    };

    /// Text to number with base detection ("0x" hex, leading 0 octal, else
    /// decimal); malformed text gives 0, overflow the type's largest value.
    /// Throws error for null or empty text.
    template <typename T>
    static T ToNumeric(const char* text);

    /// Appends the value as a stream writes it by default (first word only).
    template <typename T>
    static std::string& FromNumeric(std::string& out, T value,
                                    std::ios_base::fmtflags flags = std::ios_base::dec | std::ios_base::skipws,
                                    std::streamsize width = 0, std::streamsize precision = 6,
                                    char fill = ' ');

    /// "true"/"TRUE"/"True" or "false"/"FALSE"/"False"; throws error otherwise.
    static bool ToBool(const char* text);
    static std::string& FromBool(bool value, std::string& out, bool append);
    static std::string& FromBool(std::string& out, bool value);

    /// printf-style formatting (default "%d" / "%f"), cut at 1023 characters.
    static std::string& FromLong(long value, std::string& out, bool append, const char* format = nullptr);
    static std::string& FromLong(std::string& out, long value, const char* format = nullptr);
    static std::string& FromDouble(double value, std::string& out, bool append, const char* format = nullptr);
    static std::string& FromDouble(std::string& out, double value, const char* format = nullptr);
    /// The value scaled to the largest SI prefix not above it, with its name or
    /// symbol; values below 1e-24 (including 0 and negatives) get no prefix.
    static std::string& FromDoubleInEngrUnits(double value, std::string& out, bool append,
                                              const char* format = nullptr, bool abbreviated = false);
    static std::string& FromDoubleInEngrUnits(std::string& out, double value,
                                              const char* format = nullptr, bool abbreviated = false);

    /// Same rules as ToNumeric; throw error for null or empty text.
    static long ToLong(const char* text);
    static long long ToInt64(const char* text);
    static double ToDouble(const char* text);

    /// Splits at the first delimiter: 2 when found, else 1 (whole text in
    /// `first`) or 0 for empty text. An empty delimiter is never found.
    /// Throws error for a null text or delimiter.
    static int Split(const char* text, std::string& first, std::string& rest, const char* delimiter);
    /// Appends every piece to `parts` (a trailing delimiter adds none); returns
    /// the size of `parts`. An empty delimiter appends the whole text as one
    /// piece (none for empty text). Throws error for a null text or delimiter.
    static int Split(std::vector<std::string>& parts, const char* text, const char* delimiter);
    /// Replaces every `from` by `to`, resuming after the length of `from`.
    /// Throws error for a null `from` or `to`.
    static std::string& Replace(std::string& text, const char* from, const char* to);
    /// Remove leading (trailing) characters that occur in `characters`.
    static std::string& StripLeading(std::string& text, const char* characters);
    static std::string& StripTrailing(std::string& text, const char* characters);

private:
    // Checks the text and picks the base from its prefix; false when the value
    // is 0 without reading any digits ("0", "0x").
    static bool NumericStart(const char* text, std::ios_base::fmtflags& base, const char*& digits);
};

/// Factors of the decimal (SI) and binary prefixes.
class uEngineeringUnits
{
public:
    virtual ~uEngineeringUnits();

    static const double yotta, zetta, exa, peta, tera, giga, mega, kilo;
    static const double milli, micro, nano, pico, femto, atto, zepto, yocto;
    static const double kibi, mebi, gibi, tebi, pebi, exbi, zebi, yobi;
};

template <typename T>
T uString::ToNumeric(const char* text)
{
    std::ios_base::fmtflags base = std::ios_base::dec;
    const char* digits = text;
    if (!NumericStart(text, base, digits))
        return T(0);
    // Stream extraction gives the wanted edge behaviour: blanks skipped, 0 for
    // no digits, the largest value on overflow, trailing text ignored.
    std::istringstream in(digits);
    in.setf(base, std::ios_base::basefield);
    T value = T(0);
    in >> value;
    return value;
}

template <typename T>
std::string& uString::FromNumeric(std::string& out, T value, std::ios_base::fmtflags flags,
                                  std::streamsize width, std::streamsize precision, char fill)
{
    std::stringstream stream;
    stream.flags(flags);
    stream.width(width);
    stream.precision(precision);
    stream.fill(fill);
    stream << value;
    std::string word;
    stream >> word;
    out += word;
    return out;
}

} // namespace MORA_LUX

#endif
