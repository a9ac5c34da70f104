// Whether this test runs under AddressSanitizer, whose dlopen wrapper makes the
// loader ignore libdevid's own run path: siblings are then found only through
// LD_LIBRARY_PATH.
#ifndef DEVID_TESTS_SANITIZERBUILD_H
#define DEVID_TESTS_SANITIZERBUILD_H

namespace devid_test {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif
#else
constexpr bool kAddressSanitizer = false;
#endif

} // namespace devid_test

#endif
