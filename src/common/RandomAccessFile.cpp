#include <corvane/soa/common/RandomAccessFile.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace Corvane::Soa::Common {

using Exceptions::IOException;

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what, int error) {
    throw IOException(path + ": " + what + ": " + std::strerror(error));
}

}  // namespace

RandomAccessFile::RandomAccessFile(const std::string& path) : m_path(path) {
    m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_descriptor < 0) {
        fail(path, "cannot open the file", errno);
    }
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        const int error = S_ISDIR(status.st_mode) ? EISDIR : errno != 0 ? errno : EINVAL;
        ::close(m_descriptor);
        m_descriptor = -1;
        fail(path, "cannot read the file", error);
    }
    m_size = static_cast<std::uint64_t>(status.st_size);
}

RandomAccessFile::RandomAccessFile(RandomAccessFile&& other) noexcept
    : m_path(std::move(other.m_path)),
      m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_size(other.m_size) {}

RandomAccessFile& RandomAccessFile::operator=(RandomAccessFile&& other) noexcept {
    if (this != &other) {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
        m_path = std::move(other.m_path);
        m_descriptor = std::exchange(other.m_descriptor, -1);
        m_size = other.m_size;
    }
    return *this;
}

RandomAccessFile::~RandomAccessFile() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

std::size_t RandomAccessFile::readSomeAt(std::uint64_t offset, void* buffer,
                                         std::size_t length) const {
    auto* out = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < length) {
        const ssize_t got =
            ::pread(m_descriptor, out + done, length - done, static_cast<off_t>(offset + done));
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail(m_path,
                 "cannot read " + std::to_string(length) + " bytes at offset " +
                     std::to_string(offset),
                 errno);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void RandomAccessFile::readAt(std::uint64_t offset, void* buffer, std::size_t length) const {
    if (readSomeAt(offset, buffer, length) != length) {
        throw IOException(m_path + ": the file ends before offset " +
                          std::to_string(offset + length) + " (truncated?)");
    }
}

}  // namespace Corvane::Soa::Common
