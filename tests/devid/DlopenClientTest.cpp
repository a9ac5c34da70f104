// A client that knows the library only by its file and its C entry points.
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

TEST(DlopenClient, EntryPointsWorkThroughDlsym)
{
    devid_test::ProcessLog log;
    void* library = dlopen(DEVID_BUILD_DIR "/lib/libdevid.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto create = reinterpret_cast<void* (*)()>(dlsym(library, "CreateDeviceIdentifier"));
    auto destroy = reinterpret_cast<void (*)(void*, bool)>(dlsym(library, "DestroyDeviceIdentifier"));
    auto testMode = reinterpret_cast<void (*)()>(dlsym(library, "SetInternalTestMode"));
    ASSERT_TRUE(create && destroy && testMode && dlsym(library, "TmpDestroyDeviceIdentifier"));

    void* instance = create();
    EXPECT_EQ(create(), instance);
    destroy(instance, false);
    destroy(instance, false);
    testMode();
    EXPECT_EQ(log.count("DevId: Deleting instance"), 1u);
    EXPECT_EQ(log.count("DevId: SetInternalTestMode is not supported"), 1u);
    dlclose(library);
}
