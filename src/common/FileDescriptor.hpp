#ifndef CORVANE_SOA_SRC_COMMON_FILEDESCRIPTOR_HPP
#define CORVANE_SOA_SRC_COMMON_FILEDESCRIPTOR_HPP

// An open file descriptor, closed when it goes out of scope, and the whole-file read that the
// digests, signatures and properties files share. Not part of the exported interface.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <utility>

namespace Corvane::Soa::Common {

class FileDescriptor {
public:
    explicit FileDescriptor(int value = -1) noexcept : m_value(value) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (m_value >= 0) {
            ::close(m_value);
        }
    }

    /// Opens `path` for reading; `isOpen()` and errno tell how it went.
    static FileDescriptor openForReading(const std::string& path) noexcept {
        return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }

    bool isOpen() const noexcept { return m_value >= 0; }
    int get() const noexcept { return m_value; }

    /// Appends the rest of the file to `bytes`, with as few reads as its size allows. Returns 0,
    /// or the errno of the read that failed.
    int readAll(std::string& bytes) const {
        struct stat status {};
        if (::fstat(m_value, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
            bytes.reserve(bytes.size() + static_cast<std::size_t>(status.st_size));
        }
        char block[65536];
        for (;;) {
            const ssize_t got = ::read(m_value, block, sizeof block);
            if (got > 0) {
                bytes.append(block, static_cast<std::size_t>(got));
            } else if (got == 0) {
                return 0;
            } else if (errno != EINTR) {
                return errno;
            }
        }
    }

private:
    int m_value;
};

}  // namespace Corvane::Soa::Common

#endif
