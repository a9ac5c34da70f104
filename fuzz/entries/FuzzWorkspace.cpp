#include "fuzz/entries/FuzzWorkspace.h"

#include "common/source/source_utilities/uLogger.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace devid_fuzz {

namespace {

[[noreturn]] void Fatal(const std::string& what)
{
    std::fprintf(stderr, "fuzz workspace: %s\n", what.c_str());
    std::abort();
}

} // namespace

FuzzWorkspace& FuzzWorkspace::Get()
{
    static FuzzWorkspace workspace;
    return workspace;
}

FuzzWorkspace::FuzzWorkspace()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "devid-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        Fatal("cannot make a temporary folder");
    m_root = pattern;

    // Everything the library writes below HOME stays inside the workspace;
    // level 1 makes every log line be formatted, the hostile texts included.
    setenv("HOME", Folder("home").c_str(), 1);
    setenv("MORA_TRACE_LOGGING", "1", 1);
    setenv("MORA_TRACE_DEBUGCLIENT_PID", std::to_string(getpid()).c_str(), 1);
    unsetenv("TRACE_XMLDB_DEVICES");
    unsetenv("COMMON_VEXIF");
    // The device identifier opens these libraries per instance and closes them
    // again. libFuzzer keeps reading the coverage counters of a library it saw
    // once, so they stay mapped for the life of the process.
    for (const char* name : {"libmora_targetdb_parser.so", "libSetupAdapter4.so", "libProbeTargetAdapter.so", "libTraceFactory.so"})
        dlopen(name, RTLD_NOW | RTLD_NODELETE);
}

FuzzWorkspace::~FuzzWorkspace()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_root, ignored);
}

std::string FuzzWorkspace::Folder(const std::string& name) const
{
    const std::string path = m_root + "/" + name;
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error)
        Fatal("cannot make " + path);
    return path;
}

void FuzzWorkspace::WriteFile(const std::string& path, const uint8_t* data, size_t size) const
{
    FilePtr file(std::fopen(path.c_str(), "wb"));
    if (!file || (size > 0 && std::fwrite(data, 1, size, file.get()) != size) || std::fflush(file.get()) != 0)
        Fatal("cannot write " + path);
}

FilePtr FuzzWorkspace::Stream(const uint8_t* data, size_t size) const
{
    FilePtr file(std::tmpfile());
    if (!file || (size > 0 && std::fwrite(data, 1, size, file.get()) != size) || std::fseek(file.get(), 0, SEEK_SET) != 0)
        Fatal("cannot make a temporary stream");
    return file;
}

std::unique_ptr<Mora::Lux::Trace::CDeviceIdentifierImpl> FuzzWorkspace::MakeDeviceIdentifier()
{
    auto devId = std::make_unique<Mora::Lux::Trace::CDeviceIdentifierImpl>();
    // The first instance of the process creates the logger; from then on its
    // lines go nowhere, so a long run does not fill the disk.
    if (!m_logSilenced) {
        if (MORA_LUX::uLogger* logger = MORA_LUX::uLogSystem::GetLogSystem()->GetLogger())
            logger->SetFileName("/dev/null", true);
        m_logSilenced = true;
    }
    return devId;
}

void Violation(const char* entry, const char* rule)
{
    std::fprintf(stderr, "%s: broken rule: %s\n", entry, rule);
    std::abort();
}

} // namespace devid_fuzz
