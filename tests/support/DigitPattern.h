// Compares a text with a pattern in which '#' stands for any decimal digit:
// enough for time stamps, and lighter than std::regex.
#ifndef DEVID_TESTS_SUPPORT_DIGITPATTERN_H
#define DEVID_TESTS_SUPPORT_DIGITPATTERN_H

#include <string>

namespace devid_test {

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
