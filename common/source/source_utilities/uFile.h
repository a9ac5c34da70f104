// A locked wrapper around a C stdio stream.
#ifndef MORA_LUX_UFILE_H
#define MORA_LUX_UFILE_H

#include "common/source/source_utilities/uMutex.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

namespace MORA_LUX {

class uFile
{
public:
    /// Stores path and mode (the mode text is not copied); opens nothing.
    uFile(const char* path = nullptr, const char* mode = nullptr);
    /// Does not close the stream: callers close first.
    virtual ~uFile();
    uFile(const uFile&) = delete;
    uFile& operator=(const uFile&) = delete;

    /// False when the path is empty or the mode null, or the open fails.
    bool Open();
    /// Stores a non-null path and the mode, then opens; false on failure.
    bool Open(const char* path, const char* mode);
    /// Opens with `mode` ("r" when null or empty) through OpenRegularFile;
    /// returns whether a stream was obtained.
    bool OpenInternal(const char* path, const char* mode);
    /// fopen for regular files only, and without ever waiting: a FIFO, socket,
    /// device or folder gives null, as do a null path and a mode that does not
    /// start with r, w or a. A "w" mode empties the file only once it is known
    /// to be a regular one.
    static FILE* OpenRegularFile(const char* path, const char* mode);
    /// False when there is no stream; a failed close leaves IsOpen() true.
    bool Close();
    bool IsOpen() const;

    /// False when not open or the call fails. Both position types are
    /// exported, so a client built with or without _FILE_OFFSET_BITS=64
    /// links; with the 32-bit type a 32-bit client stops at 2 GiB.
    bool SetPosition(const __fpos_t& position);
    bool GetPosition(__fpos_t& position);
    bool SetPosition(const __fpos64_t& position);
    bool GetPosition(__fpos64_t& position);
    bool SeekToBegin();
    bool SeekToEnd();
    /// Bytes from the current position to the end; 0 when a step fails.
    int64_t GetSize();

    /// False when not open.
    bool IsEof() const;
    /// True when not open.
    bool IsError() const;
    void ClearError();
    /// False when not open or the flush fails.
    bool Flush();

    /// Bytes transferred; 0 when not open.
    unsigned Write(const void* data, unsigned count);
    /// Writes past the stream's buffer (emptied first) straight to the file,
    /// so the bytes are there when it returns: one write(2), without fwrite's
    /// copy and fflush's work. For streams that are only written. Bytes
    /// written, fewer when the system refuses the rest; 0 when not open.
    unsigned WriteThrough(const void* data, unsigned count);
    unsigned Read(void* data, unsigned count);
    /// Characters written; 0 when not open.
    int Printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int Printf(const char* format, va_list& args);
    /// False when not open or the write fails.
    bool WriteString(const char* text);
    /// One line (line end kept, at most size - 1 characters); false when nothing was read.
    bool ReadString(char* buffer, unsigned size);
    /// Empties the file and reopens it with the stored mode; does nothing
    /// unless a stream is held and the path is non-empty.
    bool Erase();

    const char* GetPath() const;
    const char* GetOpenMode() const;

    static void ZeroFILEPOS(__fpos_t& position);
    static void ZeroFILEPOS(__fpos64_t& position);
    /// a - b as byte offsets.
    static long long DifferenceFILEPOS(__fpos_t a, __fpos_t b);
    static long long DifferenceFILEPOS(__fpos64_t a, __fpos64_t b);

private:
    bool m_open;
    std::string m_path;
    const char* m_mode;
    FILE* m_stream;
    uMutex m_lock;
};

} // namespace MORA_LUX

#endif
