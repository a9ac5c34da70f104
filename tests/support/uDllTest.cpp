#include "common/source/source_utilities/uDll.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uLogger.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <stdexcept>

using MORA_LUX::uDll;

TEST(uDll, FindsTheTestLibraryByItsShortName)
{
    uDll library(nullptr, -1);
    EXPECT_STREQ(library.GetPath(), "");
    EXPECT_EQ(library.GetMode(), 1);
    EXPECT_FALSE(library.Load(nullptr, -1));
    EXPECT_EQ(library.GetSymbolAddress("devid_test_plugin_answer"), nullptr);
    std::string module;
    EXPECT_EQ(library.GetModulePath(module), "") << "nothing loaded";

#if defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
    // GCC's sanitizer runtime wraps dlopen, so the loader takes the runtime, not
    // this program, for the caller and skips our run path. Holding the library
    // open by its full path lets the short name resolve to it all the same.
    void* pinned = dlopen(DEVID_BUILD_DIR "/lib/libdevidtestplugin.so", RTLD_LAZY);
    ASSERT_NE(pinned, nullptr) << dlerror();
#endif
    ASSERT_TRUE(library.FindAndLoad("devidtestplugin", -1)) << library.GetError();
    EXPECT_STREQ(library.GetPath(), "libdevidtestplugin.so");
    EXPECT_EQ(library.GetMode(), 1);
    using Answer = int (*)();
    auto answer = reinterpret_cast<Answer>(library.GetSymbolAddress("devid_test_plugin_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_STREQ(library.GetError(), "");

    EXPECT_EQ(library.GetSymbolAddress("devid_no_such_symbol"), nullptr);
    EXPECT_STRNE(library.GetError(), "");

    // While loaded, further loads are no-ops, even for another library.
    EXPECT_TRUE(library.Load("libm.so.6", 2));
    EXPECT_STREQ(library.GetPath(), "libdevidtestplugin.so");
    EXPECT_EQ(library.GetMode(), 1);

    EXPECT_NE(library.GetModulePath(module).find("support_dll_test"), std::string::npos) << module;
    EXPECT_TRUE(library.Unload());
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_FALSE(library.Unload());
#if defined(__SANITIZE_ADDRESS__) && !defined(__clang__)
    dlclose(pinned);
#endif
}

TEST(uDll, FailedLoadKeepsAndLogsTheLoaderText)
{
    devid_test::TempDir dir;
    MORA_LUX::uEnvironment::SetVar("HOME", dir.path().c_str());
    MORA_LUX::uEnvironment::SetVar("DEVID_TEST_LOG_LEVEL", "6");
    ASSERT_TRUE(MORA_LUX::uLogSystem::GetLogSystem()->InitLog(dir.file("dll.txt").c_str(), "DEVID_TEST_LOG_LEVEL",
                                                              nullptr, true));

    uDll library;
    EXPECT_FALSE(library.FindAndLoad("devid-no-such-library", 2));
    EXPECT_STREQ(library.GetPath(), "libdevid-no-such-library.so");
    EXPECT_EQ(library.GetMode(), 2);
    const std::string error = library.GetError();
    EXPECT_NE(error.find("libdevid-no-such-library.so"), std::string::npos) << error;

    const std::string log = devid_test::readFile(dir.file("dll.txt"));
    EXPECT_NE(log.find("uDll.cpp #"), std::string::npos) << "function-entry line";
    EXPECT_NE(log.find("  FindAndLoad(...)\n"), std::string::npos);
    EXPECT_NE(log.find("uDll:  request to load \"devid-no-such-library\" in mode 2\n"), std::string::npos);
    EXPECT_NE(log.find("uDll:  GetPlatformName returned \"libdevid-no-such-library.so\"\n"), std::string::npos);
    EXPECT_NE(log.find("uDll:  Working Directory is: \""), std::string::npos);
    EXPECT_NE(log.find("uDll:  LD_LIBRARY_PATH="), std::string::npos);
    EXPECT_NE(log.find("uDll: " + error + "\n"), std::string::npos);
    EXPECT_FALSE(library.FindAndLoad(nullptr, -1));
}

TEST(uDll, NameForms)
{
    EXPECT_TRUE(uDll::hasExtension("a.sol"));
    EXPECT_FALSE(uDll::hasExtension(".so"));
    const struct { const char* name; const char* platform; const char* universal; } names[] = {
        {"parser", "libparser.so", "parser"},
        {"libhexkit.so", "libhexkit.so", "hexkit"},
        {"libfoo.so.1", "libfoo.so.1", "foo.s"}, // the cut is positional
        {".so", "lib.so.so", ".so"},
    };
    for (const auto& n : names) {
        std::string platform;
        std::string universal;
        EXPECT_EQ(uDll::GetPlatformName(platform, n.name), n.platform);
        EXPECT_EQ(uDll::GetUniversalName(universal, n.name), n.universal);
    }
}
