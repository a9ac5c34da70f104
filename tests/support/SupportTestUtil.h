// Small helpers shared by the support library's tests.
#ifndef DEVID_TESTS_SUPPORT_SUPPORTTESTUTIL_H
#define DEVID_TESTS_SUPPORT_SUPPORTTESTUTIL_H

#include <string>

namespace devid_test {

// The message of the `Error` that `action` throws, or "" when it throws none.
template <typename Error, typename Action>
std::string ErrorOf(Action action)
{
    try {
        action();
    } catch (const Error& e) {
        return e.what();
    }
    return "";
}

// Compares a text with a pattern in which '#' stands for any decimal digit.
inline bool MatchesDigits(const std::string& text, const std::string& pattern)
{
    if (text.size() != pattern.size())
        return false;
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == '#' ? !digit : text[i] != pattern[i])
            return false;
    }
    return true;
}

} // namespace devid_test

#endif
