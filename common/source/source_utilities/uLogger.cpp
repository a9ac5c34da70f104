#include "common/source/source_utilities/uLogger.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uTime.h"

#include <dlfcn.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace MORA_LUX {

namespace {

const uint32_t kBufferSize = 4096;
const uint32_t kAllLevels = 31;

// Any object of this module answers the loader's "which file holds this address".
const char kModuleAnchor = 0;

// The environment value as a base-10 number: leading digits only, 0 for text
// that is not a number, clamped to the 32-bit range.
int32_t LevelFromText(const char* text)
{
    const long long value = std::strtoll(text, nullptr, 10);
    if (value > INT32_MAX)
        return INT32_MAX;
    if (value < INT32_MIN)
        return INT32_MIN;
    return static_cast<int32_t>(value);
}

// Formatting a stamp costs more than the rest of a line, and its text changes
// at most once a second; so each thread keeps the last one it made. The clock
// is still read for every line, which also keeps uTime's fields current.
struct StampCache {
    bool valid = false;
    const char* format = nullptr;
    int fields[7] = {};
    char text[64] = {};
};

const char* CurrentStamp(const char* format)
{
    static thread_local StampCache cache;
    const uTime now = uTime::GetLocal();
    const int fields[7] = {now.GetYear(), now.GetMonth(),  now.GetDay(),        now.GetHour(),
                           now.GetMinute(), now.GetSecond(), now.GetMilliSecond()};
    if (cache.valid && cache.format == format && std::memcmp(cache.fields, fields, sizeof fields) == 0)
        return cache.text;
    if (now.FormatTime(cache.text, sizeof cache.text, format) == nullptr)
        cache.text[0] = '\0';
    cache.valid = true;
    cache.format = format;
    std::memcpy(cache.fields, fields, sizeof fields);
    return cache.text;
}

std::string DirectoryOrEmpty(std::string& (*getter)(std::string&))
{
    std::string directory;
    try {
        getter(directory);
    } catch (const source_utilities_error&) {
        directory.clear();
    }
    return directory;
}

} // namespace

uLogger::uLogger()
    : m_outputEnabled(true), m_logToStdio(false), m_logToDbgOutWindow(false), m_append(false), m_named(true),
      m_fileOpen(false), m_bufferSize(kBufferSize), m_buffer(new char[kBufferSize]), m_filter(kAllLevels)
{
    SetFileName("FTS_log.txt", false);
}

uLogger::uLogger(const char* fileName, bool append)
    : m_fileName(fileName != nullptr ? fileName : ""), m_outputEnabled(true), m_logToStdio(false),
      m_logToDbgOutWindow(false), m_append(append), m_named(true), m_fileOpen(false), m_bufferSize(kBufferSize),
      m_buffer(new char[kBufferSize]), m_filter(kAllLevels)
{
}

uLogger::~uLogger()
{
    CloseFile();
}

void uLogger::Log(unsigned level, TIME_DATE timeDate, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    Log(level, timeDate, format, args);
    va_end(args);
}

void uLogger::Log(unsigned level, TIME_DATE timeDate, const char* format, va_list& args)
{
    if (!m_outputEnabled || level == 0 || m_filter == 0)
        return;
    uMutexGuard guard(m_lock);
    char* buffer = m_buffer.get();
    const int size = static_cast<int>(m_bufferSize);
    SprintfLevel(level, buffer, size);
    int length = SprintfCurrentTime(buffer, size, timeDate);
    // Keep two bytes for the line feed and the terminator; a longer message is cut.
    const int room = size - 1 - length;
    if (format != nullptr && room > 0) {
        const int written = std::vsnprintf(buffer + length, static_cast<size_t>(room), format, args);
        if (written < 0)
            buffer[length] = '\0';
        else
            length += written < room ? written : room - 1;
    }
    AddToLog(buffer, length);
}

void uLogger::Log(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    Log(1, TD_NONE, format, args);
    va_end(args);
}

void uLogger::Log(const char* format, va_list& args)
{
    Log(1, TD_NONE, format, args);
}

void uLogger::LogTimeStamp()
{
    Log(1, TD_DATE_TIME, "\n");
}

void uLogger::LogModuleInfo()
{
    char path[kBufferSize];
    path[0] = '\0';
    Dl_info info{};
    if (dladdr(&kModuleAnchor, &info) != 0 && info.dli_fname != nullptr) {
        std::strncpy(path, info.dli_fname, sizeof path - 1);
        path[sizeof path - 1] = '\0';
    }
    const char* slash = std::strrchr(path, '/');
    const char* name = slash != nullptr ? slash + 1 : "";
    uLogSystem* system = uLogSystem::GetLogSystem();
    uLogger* logger = system->GetLoggingLevel() > 0 ? system->GetLogger() : nullptr;
    if (logger != nullptr)
        logger->Log(1, TD_NONE, "MODULE INFO - %s", name);
}

bool uLogger::EnableOutput(bool on)
{
    uMutexGuard guard(m_lock);
    const bool previous = m_outputEnabled;
    m_outputEnabled = on;
    if (!on)
        CloseFile();
    return previous;
}

void uLogger::EnableLogToStdio(bool on)
{
    m_logToStdio = on;
}

void uLogger::EnableLogDbgOutWindow(bool on)
{
    m_logToDbgOutWindow = on;
}

bool uLogger::SetFileName(const char* fileName, bool append)
{
    uMutexGuard guard(m_lock);
    const bool reopen = m_fileOpen;
    if (reopen)
        CloseFile();
    if (fileName != nullptr)
        m_fileName = fileName;
    m_append = append;
    if (reopen)
        OpenFile();
    return m_fileOpen;
}

bool uLogger::OpenFile()
{
    // A second open would orphan the first stream.
    if (m_file.IsOpen())
        m_file.Close();
    m_fileOpen = m_file.Open(m_fileName.c_str(), m_append ? "a+" : "w+");
    return m_fileOpen;
}

void uLogger::CloseFile()
{
    m_file.Close();
    m_fileOpen = false;
}

void uLogger::Clear()
{
    uMutexGuard guard(m_lock);
    m_file.Erase();
}

void uLogger::Flush()
{
    uMutexGuard guard(m_lock);
    m_file.Flush();
}

const char* uLogger::GetName() const
{
    return m_named ? m_fileName.c_str() : "";
}

int uLogger::SprintfLevel(unsigned level, char* buffer, int size)
{
    if (level == 0 || buffer == nullptr || size < 1)
        return size;
    // Built by hand: snprintf of six characters cost a sixth of a whole line.
    const char prefix[6] = {(level & 1) ? 'M' : ' ', (level & 2) ? 'W' : ' ', (level & 4) ? 'F' : ' ',
                            (level & 8) ? 'A' : ' ', (level & 16) ? 'E' : ' ', ' '};
    const int length = size - 1 < 6 ? size - 1 : 6;
    std::memcpy(buffer, prefix, static_cast<size_t>(length));
    buffer[length] = '\0';
    return length;
}

int uLogger::SprintfCurrentTime(char* buffer, int size, TIME_DATE timeDate)
{
    if (buffer == nullptr || size < 1)
        return 0;
    const char* format = " ";
    switch (timeDate) {
    case TD_DATE:
        format = "%m/%d/%y | ";
        break;
    case TD_TIME:
        format = "%H:%M:%S:%s | ";
        break;
    case TD_DATE_TIME:
        format = "%m/%d/%y %H:%M:%S:%s | ";
        break;
    default:
        break;
    }
    const size_t used = strnlen(buffer, static_cast<size_t>(size - 1));
    const int room = size - static_cast<int>(used);
    // Copied without strncpy's zero fill of the rest of the 4096-byte line buffer.
    const char* stamp = CurrentStamp(format);
    const size_t copied = strnlen(stamp, static_cast<size_t>(room - 1));
    std::memcpy(buffer + used, stamp, copied);
    buffer[used + copied] = '\0';
    return static_cast<int>(used + copied);
}

int uLogger::SprintfTime(char* buffer, int size, const tm* time)
{
    if (buffer == nullptr || size < 1 || time == nullptr)
        return 0;
    return static_cast<int>(std::strftime(buffer, static_cast<size_t>(size), "%m/%d/%y %H:%M:%S", time));
}

int uLogger::LineEnd(char* text, int length)
{
    if (text == nullptr)
        return 0;
    if (length == 0)
        length = static_cast<int>(std::strlen(text));
    if (length > 0 && text[length - 1] == '\n') {
        --length;
        if (length > 0 && text[length - 1] == '\r')
            --length;
    } else if (length > 0 && text[length - 1] == '\r') {
        --length;
        if (length > 0 && text[length - 1] == '\n')
            --length;
    }
    text[length++] = '\n';
    text[length] = '\0';
    return length;
}

int uLogger::AddToLog(char* text, int length)
{
    if (!m_outputEnabled)
        return length;
    if (!m_fileOpen)
        OpenFile();
    length = LineEnd(text, length);
    m_file.Write(text, static_cast<unsigned>(length));
    m_file.Flush();
    if (m_logToStdio) {
        std::fwrite(text, 1, static_cast<size_t>(length), stdout);
        std::fflush(stdout);
    }
    return length;
}

uLogSystem* uLogSystem::m_pSystem = nullptr;

uLogSystem::uLogSystem() : m_pLogger(nullptr), m_level(0), m_register(false), m_useCount(0) {}

uLogSystem::~uLogSystem()
{
    if (--m_useCount < 1) {
        delete m_pLogger;
        m_useCount = 0;
        m_pLogger = nullptr;
    }
    m_registry.clear();
}

uLogSystem* uLogSystem::GetLogSystem()
{
    // Several client threads may ask before anything else has logged; exactly one
    // system must come out of that. A function-local static guarantees it, and later
    // calls cost one load (every log call asks, logging on or off).
    static uLogSystem* const system = m_pSystem != nullptr ? m_pSystem : (m_pSystem = new uLogSystem());
    return system;
}

bool uLogSystem::InitLog(const char* name, const char* levelVariable, const char* directoryVariable,
                         bool registerLogger)
{
    if (name == nullptr || levelVariable == nullptr)
        return false;
    m_register = registerLogger;
    if (m_register) {
        uLogger* found = LookupLogger(name);
        if (m_pLogger != nullptr && m_pLogger != found) {
            bool registered = false;
            for (const auto& entry : m_registry)
                registered = registered || entry.second == m_pLogger;
            if (!registered)
                m_retired.emplace_back(m_pLogger);
        }
        m_pLogger = found;
    }
    if (m_pLogger != nullptr)
        return true;

    std::string path(name);
    if (directoryVariable != nullptr) {
        const char* directory = uEnvironment::GetVar(directoryVariable);
        if (directory[0] != '\0')
            path = std::string(directory) + "/" + name;
    }
    m_level = LevelFromText(uEnvironment::GetVar(levelVariable));
    m_pLogger = new uLogger(path.c_str(), true);
    if (m_register)
        m_registry[name] = m_pLogger;
    ++m_useCount;
    SetLoggingLevel(m_level);

    const std::string settings = DirectoryOrEmpty(&uEnvironment::GetTraceUserSettingsDirectory);
    const std::string data = DirectoryOrEmpty(&uEnvironment::GetTraceTemporaryDataDirectory);
    m_pLogger->Log(1, uLogger::TD_TIME, "Logger : trace user settings directory is %s", settings.c_str());
    m_pLogger->Log(1, uLogger::TD_TIME, "Logger : trace temporary data directory is %s", data.c_str());
    return true;
}

bool uLogSystem::InitLogEx(const char* name, int level, const char* directory)
{
    if (name == nullptr)
        return false;
    if (m_pLogger != nullptr)
        return true;
    const std::string path = directory != nullptr ? std::string(directory) + "/" + name : std::string(name);
    m_level = level;
    m_pLogger = new uLogger(path.c_str(), true);
    SetLoggingLevel(level);
    return true;
}

void uLogSystem::SetLoggingLevel(int level)
{
    if (m_pLogger == nullptr)
        return;
    // Unsigned, so negative values fall into the "off" row with 0 and 7+.
    const unsigned value = static_cast<unsigned>(level);
    if (value == 0 || value > 6) {
        m_pLogger->EnableOutput(false);
        return;
    }
    m_pLogger->EnableOutput(true);
    m_pLogger->EnableLogToStdio(value == 2 || value == 4 || value >= 5);
    m_pLogger->EnableLogDbgOutWindow(value >= 5);
    m_level = value <= 2 ? 1 : (value <= 5 ? 2 : 3);
}

uLogger* uLogSystem::LookupLogger(const char* name)
{
    if (name == nullptr)
        return nullptr;
    const auto found = m_registry.find(name);
    return found != m_registry.end() ? found->second : nullptr;
}

int uLogSystem::GetLoggingLevel() const
{
    return m_level;
}

uLogger* uLogSystem::GetLogger() const
{
    return m_pLogger;
}

} // namespace MORA_LUX
