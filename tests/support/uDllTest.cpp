#include "common/source/source_utilities/uDll.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

using MORA_LUX::uDll;

TEST(uDll, FindsTheTestLibraryByItsShortName)
{
#if defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
    // GCC's sanitizer runtime wraps dlopen, so the loader takes the runtime, not
    // this program, for the caller and skips our run path. Holding the library
    // open by its full path lets the short name resolve to it all the same.
    void* pinned = dlopen(DEVID_BUILD_DIR "/lib/libdevidtestplugin.so", RTLD_LAZY);
    ASSERT_NE(pinned, nullptr) << dlerror();
#endif
    uDll library;
    ASSERT_TRUE(library.FindAndLoad("devidtestplugin", -1)) << library.GetError();
    EXPECT_STREQ(library.GetPath(), "libdevidtestplugin.so");
    auto answer = reinterpret_cast<int (*)()>(library.GetSymbolAddress("devid_test_plugin_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_TRUE(library.Unload());
    EXPECT_FALSE(library.IsLoaded());
#if defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
    dlclose(pinned);
#endif

    EXPECT_FALSE(library.FindAndLoad("devid-no-such-library", 2));
    EXPECT_NE(std::string(library.GetError()).find("libdevid-no-such-library.so"), std::string::npos);
}

TEST(uDll, NameForms)
{
    const struct { const char* name; const char* platform; const char* universal; } names[] = {
        {"parser", "libparser.so", "parser"},
        {"libhexkit.so", "libhexkit.so", "hexkit"},
        {"libfoo.so.1", "libfoo.so.1", "foo.s"}, // the cut is positional
    };
    for (const auto& n : names) {
        std::string platform, universal;
        EXPECT_EQ(uDll::GetPlatformName(platform, n.name), n.platform);
        EXPECT_EQ(uDll::GetUniversalName(universal, n.name), n.universal);
    }
}
