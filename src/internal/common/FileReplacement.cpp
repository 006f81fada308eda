#include "internal/common/FileReplacement.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>

namespace Corvane::Soa::Internal::Common {

namespace {

// Writes all of `text` to `fd`; false on any failure.
bool writeAll(int fd, std::string_view text) {
    const char* data = text.data();
    std::size_t left = text.size();
    while (left != 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

// A new file beside `path` that no one else is using, opened for writing; its name goes to
// `tempPath`. -1 when none can be made.
int createTempBeside(const std::string& path, std::string& tempPath) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        tempPath = path + ".tmp-" + std::to_string(::getpid()) + "-" +
                   std::to_string(counter.fetch_add(1));
        // 0666 less the process's umask, as the file would have had when written in place.
        const int fd = ::open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// Where writing to `path` lands: `path` itself, or, when it is a symbolic link, the file the
// link names, followed link by link as opening the path would (a link that names no file yet
// names where it would be made). The new file then replaces that file and the links stay. False
// on a cycle of links.
bool linkTarget(const std::string& path, std::string& target) {
    target = path;
    // As many links as the system follows in one path.
    for (int hops = 0; hops < 40; ++hops) {
        struct stat status {};
        if (::lstat(target.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            return true;
        }
        std::array<char, PATH_MAX> named{};
        const ssize_t length = ::readlink(target.c_str(), named.data(), named.size());
        if (length <= 0 || static_cast<std::size_t>(length) >= named.size()) {
            return false;
        }
        // A relative link is read from the directory that holds it.
        const std::size_t slash = target.rfind('/');
        target = (named[0] == '/' || slash == std::string::npos ? std::string()
                                                                : target.substr(0, slash + 1)) +
                 std::string(named.data(), static_cast<std::size_t>(length));
    }
    return false;
}

// The error of the call that just failed; EIO should it have left none.
int lastError() { return errno != 0 ? errno : EIO; }

}  // namespace

int replaceFile(const std::string& path, std::string_view text) {
    std::string target;
    if (!linkTarget(path, target)) {
        return ELOOP;
    }
    std::string tempPath;
    const int fd = createTempBeside(target, tempPath);
    if (fd < 0) {
        return lastError();
    }
    // A file that is replaced keeps its permissions.
    struct stat replaced {};
    if (::stat(target.c_str(), &replaced) == 0 && S_ISREG(replaced.st_mode)) {
        ::fchmod(fd, replaced.st_mode & 07777);
    }
    // The text reaches the disk before the new file takes the target's place.
    int error = 0;
    if (!writeAll(fd, text) || ::fsync(fd) != 0) {
        error = lastError();
    }
    if (::close(fd) != 0 && error == 0) {
        error = lastError();
    }
    if (error == 0 && ::rename(tempPath.c_str(), target.c_str()) != 0) {
        error = lastError();
    }
    if (error != 0) {
        ::unlink(tempPath.c_str());
    }
    return error;
}

}  // namespace Corvane::Soa::Internal::Common
