// The process log: uLogSystem owns the current logger and the logging level
// that callers test; uLogger is one log file, opened lazily on the first line.
#ifndef MORA_LUX_ULOGGER_H
#define MORA_LUX_ULOGGER_H

#include "common/source/source_utilities/uFile.h"
#include "common/source/source_utilities/uMutex.h"

#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace MORA_LUX {

class uLogger
{
public:
    /// Time stamp written after the level prefix.
    enum TIME_DATE { TD_NONE = 0, TD_DATE = 1, TD_TIME = 2, TD_DATE_TIME = 3 };

    /// "FTS_log.txt", truncated on first open.
    uLogger();
    /// A null file name leaves the name empty.
    uLogger(const char* fileName, bool append);
    virtual ~uLogger();
    uLogger(const uLogger&) = delete;
    uLogger& operator=(const uLogger&) = delete;

    /// Writes one line; nothing when output is off or `level` is 0. Lines
    /// longer than the 4096-byte buffer are cut; a failed open is retried on the next line.
    void Log(unsigned level, TIME_DATE timeDate, const char* format, ...) __attribute__((format(printf, 4, 5)));
    void Log(unsigned level, TIME_DATE timeDate, const char* format, va_list& args);
    /// Level 1 without time stamp.
    void Log(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void Log(const char* format, va_list& args);
    /// A line holding only the prefix and the full date and time.
    void LogTimeStamp();
    /// "MODULE INFO - <library file name>" through the current logger when the level is above 0.
    void LogModuleInfo();

    /// Returns the previous setting; switching off closes the file.
    bool EnableOutput(bool on);
    void EnableLogToStdio(bool on);
    /// Recorded only; nothing on Linux reads it.
    void EnableLogDbgOutWindow(bool on);
    /// Reopens under the new name when the file was open; returns whether it is open.
    bool SetFileName(const char* fileName, bool append);
    /// Opens for appending ("a+") or truncating ("w+"); false on failure.
    bool OpenFile();
    void CloseFile();
    /// Empties the file when it is open.
    void Clear();
    void Flush();
    /// The file name, or "" when the logger is unnamed.
    const char* GetName() const;

    // The steps of writing a line.
    int SprintfLevel(unsigned level, char* buffer, int size);
    int SprintfCurrentTime(char* buffer, int size, TIME_DATE timeDate);
    int SprintfTime(char* buffer, int size, const tm* time);
    /// Ends the text in exactly one line feed; `text` needs room for two more
    /// bytes (line feed and terminator). Returns the new length.
    int LineEnd(char* text, int length);
    /// Writes and flushes the text, line end normalised (same room rule as
    /// LineEnd); returns its length.
    int AddToLog(char* text, int length);

private:
    uFile m_file;
    std::string m_fileName;
    bool m_outputEnabled;
    bool m_logToStdio;
    bool m_logToDbgOutWindow;
    bool m_append;
    bool m_named;
    bool m_fileOpen;
    uMutex m_lock;
    uint32_t m_bufferSize;
    std::unique_ptr<char[]> m_buffer;
    uint32_t m_filter;
};

class uLogSystem
{
public:
    /// The process-wide log system, created on first call (no lock).
    static uLogSystem* GetLogSystem();

    /// Creates (or, with registration, finds) the current logger; the level
    /// comes from the variable `levelVariable`, the folder from
    /// `directoryVariable`. False only for a null name or level variable.
    bool InitLog(const char* name, const char* levelVariable, const char* directoryVariable, bool registerLogger);
    /// The same with level and folder given directly; false for a null name.
    bool InitLogEx(const char* name, int level, const char* directory);
    /// Applies the level table to the current logger (which must exist).
    void SetLoggingLevel(int level);
    /// The registered logger, or null.
    uLogger* LookupLogger(const char* name);
    /// The stored level that callers test before logging.
    int GetLoggingLevel() const;
    /// The current logger, null before InitLog.
    uLogger* GetLogger() const;

    ~uLogSystem();

private:
    uLogSystem();
    uLogSystem(const uLogSystem&) = delete;
    uLogSystem& operator=(const uLogSystem&) = delete;

    static uLogSystem* m_pSystem;

    uLogger* m_pLogger;
    int32_t m_level;
    bool m_register;
    int32_t m_useCount;
    std::map<std::string, uLogger*> m_registry;
    // Unregistered loggers displaced by a registry lookup; kept alive because
    // callers may still hold them.
    std::vector<std::unique_ptr<uLogger>> m_retired;
};

} // namespace MORA_LUX

#endif
