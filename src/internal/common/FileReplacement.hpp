#ifndef CORVANE_SOA_INTERNAL_COMMON_FILEREPLACEMENT_HPP
#define CORVANE_SOA_INTERNAL_COMMON_FILEREPLACEMENT_HPP

#include <string>
#include <string_view>

namespace Corvane::Soa::Internal::Common {

/// Replaces the file at `path` by one holding `text`, in one step: the text goes to a new file
/// beside the target, reaches the disk, and the new file is renamed over the target, so that
/// the target holds one whole version or the other even after a crash. When `path` is a
/// symbolic link, the file it names is replaced (followed link by link; a dangling link gets its
/// file made) and the links stay. A replaced file keeps its permissions; a new one gets 0666
/// less the umask. Directories are not made.
///
/// Returns 0 when done, otherwise the `errno` of the step that failed (`ELOOP` for a cycle of
/// links); the target is then untouched and no temporary file is left.
int replaceFile(const std::string& path, std::string_view text);

}  // namespace Corvane::Soa::Internal::Common

#endif
