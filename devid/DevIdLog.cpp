#include "devid/DevIdLog.h"

#include "common/source/source_utilities/uLogger.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace Mora {
namespace Lux {
namespace Trace {

using MORA_LUX::uLogger;
using MORA_LUX::uLogSystem;

int LoggingLevel()
{
    return uLogSystem::GetLogSystem()->GetLoggingLevel();
}

void DevIdLog(unsigned level, const char* format, ...)
{
    uLogSystem* system = uLogSystem::GetLogSystem();
    uLogger* logger = system->GetLoggingLevel() > 0 ? system->GetLogger() : nullptr;
    if (logger == nullptr)
        return;
    va_list args;
    va_start(args, format);
    logger->Log(level, uLogger::TD_TIME, format, args);
    va_end(args);
}

void DevIdTraceEntry(const char* source, int line, const char* function)
{
    uLogSystem* system = uLogSystem::GetLogSystem();
    uLogger* logger = system->GetLoggingLevel() > 2 ? system->GetLogger() : nullptr;
    if (logger != nullptr)
        logger->Log(4, uLogger::TD_NONE, "%s #%d  %s(...)\n", source, line, function);
}

std::string HexAddress(const void* address)
{
    char text[2 + 2 * sizeof(uintptr_t) + 1];
    std::snprintf(text, sizeof text, "0x%" PRIxPTR, reinterpret_cast<uintptr_t>(address));
    return text;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
