#include "common/source/source_utilities/uLogger.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uTime.h"

#include <dlfcn.h>
#include <sys/types.h>

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

// Formatting a stamp costs more than the rest of a line, and every field it
// shows follows from the clock's second; so each thread keeps the last stamp it
// made and the second it made it in. Which second it is comes from the
// kernel's coarse clock: reading the precise one cost 3% of a line, and the
// coarse one lags it by at most a tick (a few milliseconds) against the
// stamp's whole seconds. New stamps are made from uTime's precise reading,
// which also keeps uTime's shared fields as current as the stamps.
struct StampCache {
    const char* format = nullptr;
    time_t second = -1;
    size_t length = 0;
    char text[64] = {};
};

const StampCache& CurrentStamp(const char* format)
{
    static thread_local StampCache cache;
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    if (cache.format == format && cache.second == now.tv_sec)
        return cache;
    const uTime local = uTime::GetLocal();
    if (local.FormatTime(cache.text, sizeof cache.text, format) == nullptr)
        cache.text[0] = '\0';
    cache.length = std::strlen(cache.text);
    cache.format = format;
    cache.second = now.tv_sec;
    return cache;
}

// The steps of writing a line live here rather than only in the exported
// members, so that Log's calls to them are inlined instead of going through
// the library's symbol table.

int PutLevel(unsigned level, char* buffer, int size)
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

int PutCurrentTime(char* buffer, int size, uLogger::TIME_DATE timeDate)
{
    if (buffer == nullptr || size < 1)
        return 0;
    const char* format = " ";
    switch (timeDate) {
    case uLogger::TD_DATE:
        format = "%m/%d/%y | ";
        break;
    case uLogger::TD_TIME:
        format = "%H:%M:%S:%s | ";
        break;
    case uLogger::TD_DATE_TIME:
        format = "%m/%d/%y %H:%M:%S:%s | ";
        break;
    default:
        break;
    }
    const size_t used = strnlen(buffer, static_cast<size_t>(size - 1));
    const size_t room = static_cast<size_t>(size) - 1 - used;
    // Copied without strncpy's zero fill of the rest of the 4096-byte line buffer.
    const StampCache& stamp = CurrentStamp(format);
    const size_t copied = stamp.length < room ? stamp.length : room;
    std::memcpy(buffer + used, stamp.text, copied);
    buffer[used + copied] = '\0';
    return static_cast<int>(used + copied);
}

int EndLine(char* text, int length)
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

// The line being built: text goes in up to `end` and is cut there.
struct LineWriter {
    char* next;
    char* end;

    void Put(const char* text, size_t count)
    {
        const size_t room = static_cast<size_t>(end - next);
        if (count > room)
            count = room;
        std::memcpy(next, text, count);
        next += count;
    }

    void Fill(char c, size_t count)
    {
        const size_t room = static_cast<size_t>(end - next);
        if (count > room)
            count = room;
        std::memset(next, c, count);
        next += count;
    }
};

// Wider fields are rare enough to leave to vsnprintf.
const unsigned kMaxWidth = 64;

// Writes `format` with `args` the way vsnprintf would, for the conversions our
// lines use: %s and %c bare, %d %i %u %x %X with a zero flag, a width and an
// h, hh, l, ll or z modifier, and %%. False at anything else (args then half
// read): the caller formats the whole message with vsnprintf instead. glibc's
// vsnprintf passes every piece through its stream machinery and cost more than
// the rest of the line together.
bool FormatCommon(LineWriter& out, const char* format, va_list& args)
{
    const char* p = format;
    while (*p != '\0') {
        const char* percent = std::strchr(p, '%');
        if (percent == nullptr) {
            out.Put(p, std::strlen(p));
            return true;
        }
        out.Put(p, static_cast<size_t>(percent - p));
        p = percent + 1;
        bool zero = false;
        while (*p == '0') {
            zero = true;
            ++p;
        }
        unsigned width = 0;
        for (; *p >= '0' && *p <= '9'; ++p) {
            width = width * 10 + static_cast<unsigned>(*p - '0');
            if (width > kMaxWidth)
                return false;
        }
        int longs = 0;
        int shorts = 0;
        bool sizeT = false;
        for (;; ++p) {
            if (*p == 'l')
                ++longs;
            else if (*p == 'h')
                ++shorts;
            else if (*p == 'z')
                sizeT = true;
            else
                break;
        }
        const bool modified = longs + shorts > 0 || sizeT;
        if (longs > 2 || shorts > 2 || (longs > 0 && shorts > 0) || (sizeT && longs + shorts > 0))
            return false;
        const char conversion = *p++;
        if (conversion == '%' || conversion == 's' || conversion == 'c') {
            if (zero || width > 0 || modified)
                return false;
            if (conversion == '%') {
                out.Put("%", 1);
            } else if (conversion == 'c') {
                const char c = static_cast<char>(va_arg(args, int));
                out.Put(&c, 1);
            } else {
                const char* text = va_arg(args, const char*);
                if (text == nullptr)
                    text = "(null)";
                out.Put(text, strnlen(text, static_cast<size_t>(out.end - out.next)));
            }
            continue;
        }
        unsigned long long magnitude = 0;
        bool negative = false;
        unsigned base = 10;
        const char* digits = "0123456789abcdef";
        if (conversion == 'd' || conversion == 'i') {
            long long value;
            if (longs == 2)
                value = va_arg(args, long long);
            else if (longs == 1)
                value = va_arg(args, long);
            else if (sizeT)
                value = va_arg(args, ssize_t);
            else
                value = va_arg(args, int);
            if (shorts == 1)
                value = static_cast<short>(value);
            else if (shorts == 2)
                value = static_cast<signed char>(value);
            negative = value < 0;
            // Through unsigned, so that the lowest value has a magnitude too.
            magnitude = negative ? 0ULL - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
        } else if (conversion == 'u' || conversion == 'x' || conversion == 'X') {
            if (longs == 2)
                magnitude = va_arg(args, unsigned long long);
            else if (longs == 1)
                magnitude = va_arg(args, unsigned long);
            else if (sizeT)
                magnitude = va_arg(args, size_t);
            else
                magnitude = va_arg(args, unsigned);
            if (shorts == 1)
                magnitude = static_cast<unsigned short>(magnitude);
            else if (shorts == 2)
                magnitude = static_cast<unsigned char>(magnitude);
            if (conversion != 'u')
                base = 16;
            if (conversion == 'X')
                digits = "0123456789ABCDEF";
        } else {
            return false;
        }
        char text[24];
        char* first = text + sizeof text;
        do {
            *--first = digits[magnitude % base];
            magnitude /= base;
        } while (magnitude != 0);
        const unsigned length = static_cast<unsigned>(text + sizeof text - first) + (negative ? 1 : 0);
        const unsigned pad = width > length ? width - length : 0;
        if (!zero)
            out.Fill(' ', pad);
        if (negative)
            out.Put("-", 1);
        if (zero)
            out.Fill('0', pad);
        out.Put(first, static_cast<size_t>(text + sizeof text - first));
    }
    return true;
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
    PutLevel(level, buffer, size);
    int length = PutCurrentTime(buffer, size, timeDate);
    if (format != nullptr) {
        // Keep two bytes for the line feed and the terminator; a longer message is cut.
        LineWriter out{buffer + length, buffer + size - 2};
        va_list common;
        va_copy(common, args);
        if (!FormatCommon(out, format, common)) {
            const int room = size - 1 - length;
            const int written = std::vsnprintf(buffer + length, static_cast<size_t>(room), format, args);
            out.next = buffer + length + (written < 0 ? 0 : (written < room ? written : room - 1));
        }
        va_end(common);
        length = static_cast<int>(out.next - buffer);
    }
    buffer[length] = '\0';
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
    return PutLevel(level, buffer, size);
}

int uLogger::SprintfCurrentTime(char* buffer, int size, TIME_DATE timeDate)
{
    return PutCurrentTime(buffer, size, timeDate);
}

int uLogger::SprintfTime(char* buffer, int size, const tm* time)
{
    if (buffer == nullptr || size < 1 || time == nullptr)
        return 0;
    return static_cast<int>(std::strftime(buffer, static_cast<size_t>(size), "%m/%d/%y %H:%M:%S", time));
}

int uLogger::LineEnd(char* text, int length)
{
    return EndLine(text, length);
}

int uLogger::AddToLog(char* text, int length)
{
    if (!m_outputEnabled)
        return length;
    if (!m_fileOpen)
        OpenFile();
    length = EndLine(text, length);
    m_file.WriteThrough(text, static_cast<unsigned>(length));
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
