// A debugger built elsewhere sees the sibling libraries through its own
// interface declarations with the same virtual slot layout under other names,
// so a slot moved in our headers shows up as a wrong answer or a crash here.
#ifndef DEVID_TESTS_SIBLINGCLIENT_H
#define DEVID_TESTS_SIBLINGCLIENT_H

#include <dlfcn.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace sibling_client {

class ScanSetup {
public:
    virtual bool Open(std::string& nameOrError) = 0;                                 // 0
    virtual void BoardFile(std::string& path) = 0;                                   // 1
    virtual bool Parent(std::string& name, uint32_t& type, const char* device) = 0;  // 2
    virtual bool Count(int32_t& count) = 0;                                          // 3
    virtual void Device(int32_t index, std::string& name, uint32_t& type) = 0;       // 4
    virtual void TraceId(int32_t index, uint32_t& traceId) = 0;                      // 5
    virtual void Unused6() = 0;
    virtual void Dap(std::string device, std::string& dap) = 0;                      // 7
protected:
    ~ScanSetup() = default;
};

class Probe {
public:
    virtual ~Probe() = default;                                                      // 0, 1
    virtual void U2() = 0; virtual void U3() = 0; virtual void U4() = 0;
    virtual uint32_t Memory(uint32_t& value, uint32_t address, uint32_t unit, bool paged) = 0; // 5
    virtual void U6() = 0;
    virtual uint32_t Register(uint32_t handle, uint32_t& value) = 0;                 // 7
    virtual uint32_t Lookup(const char* name, uint32_t& handle) = 0;                 // 8
    virtual void U9() = 0; virtual void U10() = 0; virtual void U11() = 0; virtual void U12() = 0;
    virtual void U13() = 0; virtual void U14() = 0; virtual void U15() = 0;
    virtual bool Ready() = 0;                                                        // 16
};

class Channel {
public:
    virtual void U0() = 0; virtual void U1() = 0; virtual void U2() = 0; virtual void U3() = 0;
    virtual void U4() = 0; virtual void U5() = 0; virtual void U6() = 0; virtual void U7() = 0;
    virtual void U8() = 0; virtual void U9() = 0; virtual void U10() = 0; virtual void U11() = 0;
    virtual void OutFile(const std::string& proc, std::string& file) = 0;            // 12
protected:
    ~Channel() = default;
};

class Factory {
public:
    virtual void Connect(Channel** server, int mode) = 0;                            // 0
    virtual void Disconnect(Channel* server, int mode) = 0;                          // 1
protected:
    ~Factory() = default;
};

/// Opens a sibling library by its short name (by full path under the
/// sanitizers, whose dlopen wrapper hides the test's run path); throws on failure.
inline void* Open(const std::string& fileName)
{
#ifdef SIBLING_TEST_FULL_PATHS
    void* library = dlopen((DEVID_BUILD_DIR "/lib/" + fileName).c_str(), RTLD_NOW | RTLD_LOCAL);
#else
    void* library = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
    if (library == nullptr)
        throw std::runtime_error(dlerror());
    return library;
}

template <typename Fn> Fn Symbol(void* library, const char* name)
{
    if (void* address = dlsym(library, name))
        return reinterpret_cast<Fn>(address);
    throw std::runtime_error(std::string("missing symbol ") + name);
}

} // namespace sibling_client

#endif
