// A client that knows the library only by its file and its four C entry points.
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

using CreateFn = void* (*)();
using DestroyFn = void (*)(void*, bool);
using TestModeFn = void (*)();

} // namespace

TEST(DlopenClient, EntryPointsWorkThroughDlsym)
{
    devid_test::ProcessLog log;
    void* library = dlopen(DEVID_BUILD_DIR "/lib/libdevid.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto create = reinterpret_cast<CreateFn>(dlsym(library, "CreateDeviceIdentifier"));
    auto destroy = reinterpret_cast<DestroyFn>(dlsym(library, "DestroyDeviceIdentifier"));
    auto tmpDestroy = reinterpret_cast<DestroyFn>(dlsym(library, "TmpDestroyDeviceIdentifier"));
    auto testMode = reinterpret_cast<TestModeFn>(dlsym(library, "SetInternalTestMode"));
    ASSERT_TRUE(create && destroy && tmpDestroy && testMode);

    void* first = create();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(create(), first);
    destroy(first, false);
    tmpDestroy(first, false);
    testMode();
    EXPECT_EQ(log.count("DevId: Deleting instance"), 1u);
    EXPECT_EQ(log.count("DevId: SetInternalTestMode is not supported"), 1u);
    EXPECT_EQ(log.count("DevId: Loaded libmora_targetdb_parser.so"), 1u);
    dlclose(library);
}
