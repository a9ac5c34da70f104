// A simulated board in a scratch folder, the environment pointing at it, and the log.
#ifndef DEVID_TESTS_TARGETBOARD_H
#define DEVID_TESTS_TARGETBOARD_H

#include "common/source/source_utilities/uDll.h"
#include "devid/CDeviceIdentifierImpl.h"
#include "tests/common/DeviceIdentifierTestAccess.h"
#include "tests/common/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace devid_test {

// The sanitizer runtime hides libdevid.so's run path from dlopen; loading the
// siblings by full path first lets the identifier's loads by short name find them.
inline void PreloadSiblingsWhenSanitized()
{
#ifdef __SANITIZE_ADDRESS__
    static MORA_LUX::uDll siblings[3];
    const char* names[3] = {"libSetupAdapter4.so", "libProbeTargetAdapter.so", "libTraceFactory.so"};
    for (int i = 0; i < 3; ++i)
        siblings[i].Load((std::string(DEVID_BUILD_DIR "/lib/") + names[i]).c_str());
#endif
}

// The log goes below the first HOME of the process, so one board per test.
class TargetBoard {
public:
    TargetBoard()
    {
        for (const char* sub : {"home", "board", "db"})
            std::filesystem::create_directories(m_dir.file(sub));
        setenv("HOME", m_dir.file("home").c_str(), 1);
        setenv("COMMON_VEXIF", m_dir.file("board").c_str(), 1);
        setenv("TRACE_XMLDB_DEVICES", m_dir.file("db").c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        PreloadSiblingsWhenSanitized();
    }

    void devices(const std::string& body) const
    {
        raw("simboard.xml", "<simboard config=\"board.cfg\">\n" + body + "</simboard>\n");
    }
    void raw(const std::string& name, const std::string& content) const { m_dir.write("board/" + name, content); }
    std::string path(const std::string& name) const { return m_dir.file("board/" + name); }
    std::unique_ptr<Mora::Lux::Trace::CDeviceIdentifierImpl> identifier() const
    {
        return std::make_unique<Mora::Lux::Trace::CDeviceIdentifierImpl>();
    }

    std::string log() const
    {
        std::string text;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_dir.file("home")))
            if (entry.path().filename().string().rfind("mora_trace_log", 0) == 0)
                text += readFile(entry.path().string());
        return text;
    }
    int logged(const std::string& line) const
    {
        int n = 0;
        for (std::string text = log(); text.find(line) != std::string::npos; ++n)
            text.erase(0, text.find(line) + 1);
        return n;
    }

private:
    TempDir m_dir;
};

} // namespace devid_test

#endif
