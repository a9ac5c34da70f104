// Device IDs and families: the alias file that names device families, the
// match of client IDs against the IDs read from the target, and the type code
// of a scan-chain device.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/NumberText.h"
#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

const int kLineSize = 4096;
const std::size_t kFamilySize = 32;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool EndsWord(char c)
{
    return IsBlank(c) || c == '\n' || c == '\r' || c == '\0';
}

} // namespace

void CDeviceIdentifierImpl::PopulateId2Family()
{
    std::string path = MORA_LUX::uEnvironment::GetVar("COMMON_VEXIF");
    if (!path.empty())
        path += "/";
    path += "kmralias.cfg";

    std::unique_ptr<FILE, decltype(&std::fclose)> file(MORA_LUX::uFile::OpenRegularFile(path.c_str(), "r"), &std::fclose);
    if (!file) {
        DevIdLog(2, "DevId: Cannot open kmralias.cfg file");
        return;
    }

    char line[kLineSize];
    // The first line is the file's own header.
    if (std::fgets(line, kLineSize, file.get()) == nullptr)
        return;

    bool inSection = false;
    std::string family;
    while (std::fgets(line, kLineSize, file.get()) != nullptr) {
        if (!inSection) {
            if (line[0] == '~' && line[1] == ' ') {
                inSection = true;
                family.clear();
                for (const char* p = line + 2; !EndsWord(*p) && family.size() + 1 < kFamilySize; ++p)
                    family += *p;
            }
            continue;
        }
        if (line[0] == '~') {
            inSection = false;
            continue;
        }

        const char* p = line;
        for (;;) {
            while (IsBlank(*p))
                ++p;
            if (std::strncmp(p, "alias", 5) != 0)
                break;
            const char* equals = std::strchr(p, '=');
            if (equals == nullptr)
                break;
            p = equals + 1;
            // The character after "=" is skipped whatever it is, but never the line's end.
            if (*p != '\0')
                ++p;
            // Further blanks before the number are skipped, as the number conversion would.
            while (IsBlank(*p))
                ++p;
            std::string value;
            for (; !EndsWord(*p); ++p)
                value += *p;
            const uint32_t id = ParseUnsigned32(value.c_str(), 0);
            if (id != 0)
                m_families.push_back(Id2Family{id, family});
        }
    }
}

bool CDeviceIdentifierImpl::DeviceMatch(unsigned int id, unsigned int mask)
{
    DevIdLog(1, "DevId: checking for match with 0x%08lx/0x%08lx",
             static_cast<unsigned long>(id), static_cast<unsigned long>(mask));
    for (uint32_t deviceId : m_deviceIds) {
        if ((mask & (deviceId ^ id)) != 0) {
            DevIdLog(1, "DevId: did not match ID 0x%08lx", static_cast<unsigned long>(deviceId));
            continue;
        }
        DevIdLog(1, "DevId: matched ID 0x%08lx", static_cast<unsigned long>(deviceId));
        return true;
    }
    return false;
}

unsigned int CDeviceIdentifierImpl::GetProcId(const char* procName)
{
    if (procName == nullptr)
        return 0;
    auto it = m_deviceTypes.find(procName);
    if (it == m_deviceTypes.end())
        return 0;
    // This device reports the code of an older revision; callers expect the current one.
    if (it->second == 0x500191B8u)
        return 0x50019348u;
    return it->second;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
