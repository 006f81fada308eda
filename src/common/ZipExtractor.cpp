#include "common/ZipExtractor.hpp"

#include "common/FileDescriptor.hpp"
#include "common/ZipEntryReader.hpp"

#include <corvane/soa/common/exceptions/IOException.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace Corvane::Soa::Common {

using Exceptions::IOException;

namespace {

constexpr std::size_t kPieceSize = std::size_t{256} * 1024;
constexpr unsigned kPermissionBits = 0777;
constexpr unsigned kDefaultFileMode = 0666;
constexpr unsigned kDirectoryMode = 0777;

std::vector<std::string> splitName(const std::string& name) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= name.size()) {
        std::size_t slash = name.find('/', start);
        if (slash == std::string::npos) {
            slash = name.size();
        }
        std::string part = name.substr(start, slash - start);
        if (!part.empty() && part != ".") {
            parts.push_back(std::move(part));
        }
        start = slash + 1;
    }
    return parts;
}

}  // namespace

std::string ZipExtractor::unsafeName(const std::string& name) {
    if (name.empty()) {
        return "the name is empty";
    }
    if (name.front() == '/') {
        return "the name is absolute";
    }
    if (name.find('\\') != std::string::npos) {
        return "the name holds a backslash";
    }
    if (name.find('\0') != std::string::npos) {
        return "the name holds a NUL character";
    }
    if (name.size() >= 2 && name[1] == ':' &&
        ((name[0] >= 'A' && name[0] <= 'Z') || (name[0] >= 'a' && name[0] <= 'z'))) {
        return "the name starts with a drive letter";
    }
    for (const std::string& part : splitName(name)) {
        if (part == "..") {
            return "the name holds a \"..\" part";
        }
    }
    return {};
}

void ZipExtractor::fail(const ZipEntry& entry, const std::string& what) const {
    throw IOException(m_archive.getPath() + ": " + entry.getName() + ": " + what);
}

void ZipExtractor::extractAll() {
    for (const ZipEntry& entry : m_archive.getEntries()) {
        const std::string why = unsafeName(entry.getName());
        if (!why.empty()) {
            fail(entry, "refused: " + why + "; nothing was extracted");
        }
        if (!entry.isDirectory() && !entry.isSymbolicLink()) {
            ZipEntryReader::check(m_archive, entry);
        }
    }
    std::error_code error;
    std::filesystem::create_directories(m_directory, error);
    const FileDescriptor root(::open(m_directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (root.get() < 0) {
        throw IOException(m_archive.getPath() + ": cannot open the directory " + m_directory +
                          " to extract into: " + std::strerror(errno));
    }
    for (const ZipEntry& entry : m_archive.getEntries()) {
        if (!entry.isSymbolicLink()) {
            extract(entry, root.get());
        }
    }
}

void ZipExtractor::extract(const ZipEntry& entry, int root) {
    const std::vector<std::string> parts = splitName(entry.getName());
    if (parts.empty()) {
        return;
    }
    const std::size_t directories = entry.isDirectory() ? parts.size() : parts.size() - 1;
    const FileDescriptor parent(openDirectories(entry, root, parts, directories));
    if (!entry.isDirectory()) {
        writeFile(entry, parent.get(), parts.back());
    }
}

int ZipExtractor::openDirectories(const ZipEntry& entry, int root,
                                  const std::vector<std::string>& parts, std::size_t count) {
    int current = ::dup(root);
    std::string path = m_directory;
    for (std::size_t i = 0; i < count && current >= 0; ++i) {
        const FileDescriptor previous(current);
        path += "/" + parts[i];
        if (::mkdirat(previous.get(), parts[i].c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
            fail(entry, "cannot make the directory " + path + ": " + std::strerror(errno));
        }
        current = ::openat(previous.get(), parts[i].c_str(),
                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (current < 0) {
            const int error = errno;
            struct stat status {};
            if (::fstatat(previous.get(), parts[i].c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(status.st_mode)) {
                fail(entry, "refused: " + path + " is a symbolic link, which could lead outside " +
                                m_directory);
            }
            fail(entry, "cannot open the directory " + path + ": " + std::strerror(error));
        }
    }
    if (current < 0) {
        fail(entry, "cannot open the directory " + m_directory + ": " + std::strerror(errno));
    }
    return current;
}

void ZipExtractor::writeFile(const ZipEntry& entry, int directory, const std::string& name) {
    const std::string temporary =
        ".cvsoa-zip-" + std::to_string(::getpid()) + "-" + std::to_string(++m_temporaries);
    const unsigned mode = entry.getUnixMode() & kPermissionBits;
    const int file =
        ::openat(directory, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                 mode != 0 ? mode : kDefaultFileMode);
    if (file < 0) {
        fail(entry, "cannot write into the directory of " + name + ": " + std::strerror(errno));
    }
    try {
        const FileDescriptor output(file);
        ZipEntryReader reader(m_archive, entry);
        const std::unique_ptr<char[]> buffer(new char[kPieceSize]);
        for (std::size_t got = 0; (got = reader.read(buffer.get(), kPieceSize)) > 0;) {
            for (std::size_t done = 0; done < got;) {
                const ssize_t wrote = ::write(file, buffer.get() + done, got - done);
                if (wrote < 0 && errno != EINTR) {
                    fail(entry, "cannot write " + name + ": " + std::strerror(errno));
                }
                done += wrote > 0 ? static_cast<std::size_t>(wrote) : 0;
            }
        }
        const std::int64_t seconds = entry.getModificationTime().toTime();
        const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ::futimens(file, times);
        if (::renameat(directory, temporary.c_str(), directory, name.c_str()) != 0) {
            fail(entry, "cannot write " + name + ": " + std::strerror(errno));
        }
    } catch (...) {
        ::unlinkat(directory, temporary.c_str(), 0);
        throw;
    }
}

}  // namespace Corvane::Soa::Common
