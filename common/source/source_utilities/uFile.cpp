// Both position types are named here, and each has its own stdio calls:
// the 64-bit offset switch would rename fgetpos and fsetpos to their 64-bit forms.
#undef _FILE_OFFSET_BITS
#include "common/source/source_utilities/uFile.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace MORA_LUX {

uFile::uFile(const char* path, const char* mode)
    : m_open(false), m_path(path != nullptr ? path : ""), m_mode(mode), m_stream(nullptr)
{
}

uFile::~uFile() = default;

bool uFile::Open()
{
    if (m_path.empty() || m_mode == nullptr)
        return false;
    return OpenInternal(m_path.c_str(), m_mode);
}

bool uFile::Open(const char* path, const char* mode)
{
    if (path != nullptr)
        m_path = path;
    m_mode = mode;
    return OpenInternal(m_path.c_str(), mode);
}

bool uFile::OpenInternal(const char* path, const char* mode)
{
    if (path == nullptr)
        return false;
    m_stream = OpenRegularFile(path, (mode == nullptr || mode[0] == '\0') ? "r" : mode);
    m_open = m_stream != nullptr;
    return m_open;
}

FILE* uFile::OpenRegularFile(const char* path, const char* mode)
{
    if (path == nullptr || mode == nullptr)
        return nullptr;
    int flags = 0;
    switch (mode[0]) {
    case 'r':
        break;
    case 'w':
        flags = O_CREAT;
        break;
    case 'a':
        flags = O_CREAT | O_APPEND;
        break;
    default:
        return nullptr;
    }
    if (std::strchr(mode, '+') != nullptr)
        flags |= O_RDWR;
    else
        flags |= mode[0] == 'r' ? O_RDONLY : O_WRONLY;
    // Without O_NONBLOCK, opening a FIFO waits for its other end, possibly for ever.
    // O_LARGEFILE keeps files past 2 GiB open on a 32-bit host, as fopen64 does.
    const int fd = open(path, flags | O_NONBLOCK | O_CLOEXEC | O_LARGEFILE, 0666);
    if (fd < 0)
        return nullptr;
    struct stat64 info;
    FILE* stream = nullptr;
    if (fstat64(fd, &info) == 0 && S_ISREG(info.st_mode) && (mode[0] != 'w' || ftruncate(fd, 0) == 0))
        stream = fdopen(fd, mode);
    if (stream == nullptr)
        close(fd);
    return stream;
}

bool uFile::Close()
{
    if (m_stream == nullptr)
        return false;
    uMutexGuard guard(m_lock);
    m_open = std::fclose(m_stream) != 0;
    m_stream = nullptr;
    return true;
}

bool uFile::IsOpen() const
{
    return m_open;
}

bool uFile::SetPosition(const __fpos_t& position)
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && std::fsetpos(m_stream, &position) == 0;
}

bool uFile::GetPosition(__fpos_t& position)
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && std::fgetpos(m_stream, &position) == 0;
}

bool uFile::SetPosition(const __fpos64_t& position)
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && ::fsetpos64(m_stream, &position) == 0;
}

bool uFile::GetPosition(__fpos64_t& position)
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && ::fgetpos64(m_stream, &position) == 0;
}

bool uFile::SeekToBegin()
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr)
        return false;
    std::rewind(m_stream);
    return true;
}

bool uFile::SeekToEnd()
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && std::fseek(m_stream, 0, SEEK_END) == 0;
}

int64_t uFile::GetSize()
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr)
        return 0;
    __fpos64_t current;
    __fpos64_t end;
    if (::fgetpos64(m_stream, &current) != 0 || std::fseek(m_stream, 0, SEEK_END) != 0 ||
        ::fgetpos64(m_stream, &end) != 0 || ::fsetpos64(m_stream, &current) != 0)
        return 0;
    return DifferenceFILEPOS(end, current);
}

bool uFile::IsEof() const
{
    return m_stream != nullptr && std::feof(m_stream) != 0;
}

bool uFile::IsError() const
{
    return m_stream == nullptr || std::ferror(m_stream) != 0;
}

void uFile::ClearError()
{
    if (m_stream != nullptr)
        std::clearerr(m_stream);
}

bool uFile::Flush()
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && std::fflush(m_stream) == 0;
}

unsigned uFile::Write(const void* data, unsigned count)
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr || data == nullptr)
        return 0;
    return static_cast<unsigned>(std::fwrite(data, 1, count, m_stream));
}

unsigned uFile::WriteThrough(const void* data, unsigned count)
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr || data == nullptr || (__fpending(m_stream) > 0 && std::fflush(m_stream) != 0))
        return 0;
    const int fd = fileno(m_stream);
    const char* bytes = static_cast<const char*>(data);
    unsigned written = 0;
    while (written < count) {
        const ssize_t result = write(fd, bytes + written, count - written);
        if (result < 0 && errno == EINTR)
            continue;
        if (result <= 0)
            break;
        written += static_cast<unsigned>(result);
    }
    return written;
}

unsigned uFile::Read(void* data, unsigned count)
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr || data == nullptr)
        return 0;
    return static_cast<unsigned>(std::fread(data, 1, count, m_stream));
}

int uFile::Printf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int count = Printf(format, args);
    va_end(args);
    return count;
}

int uFile::Printf(const char* format, va_list& args)
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr || format == nullptr)
        return 0;
    return std::vfprintf(m_stream, format, args);
}

bool uFile::WriteString(const char* text)
{
    uMutexGuard guard(m_lock);
    return m_stream != nullptr && text != nullptr && std::fputs(text, m_stream) >= 0;
}

bool uFile::ReadString(char* buffer, unsigned size)
{
    uMutexGuard guard(m_lock);
    if (m_stream == nullptr || buffer == nullptr || size == 0 || size > static_cast<unsigned>(INT32_MAX))
        return false;
    return std::fgets(buffer, static_cast<int>(size), m_stream) != nullptr;
}

bool uFile::Erase()
{
    if (m_stream == nullptr || m_path.empty())
        return false;
    Close();
    if (OpenInternal(m_path.c_str(), "w"))
        Close();
    return OpenInternal(m_path.c_str(), m_mode);
}

const char* uFile::GetPath() const
{
    return m_path.c_str();
}

const char* uFile::GetOpenMode() const
{
    return m_mode;
}

namespace {

template <typename Position>
void Zero(Position& position)
{
    std::memset(&position, 0, sizeof position);
}

// glibc keeps the byte offset of a position in __pos.
template <typename Position>
long long Difference(const Position& a, const Position& b)
{
    return static_cast<long long>(a.__pos) - static_cast<long long>(b.__pos);
}

} // namespace

void uFile::ZeroFILEPOS(__fpos_t& position)
{
    Zero(position);
}

void uFile::ZeroFILEPOS(__fpos64_t& position)
{
    Zero(position);
}

long long uFile::DifferenceFILEPOS(__fpos_t a, __fpos_t b)
{
    return Difference(a, b);
}

long long uFile::DifferenceFILEPOS(__fpos64_t a, __fpos64_t b)
{
    return Difference(a, b);
}

} // namespace MORA_LUX
