#ifndef CORVANE_SOA_COMMON_ZIPEXTRACTOR_HPP
#define CORVANE_SOA_COMMON_ZIPEXTRACTOR_HPP

#include <corvane/soa/common/ZipArchive.hpp>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Corvane::Soa::Common {

/// Writes the entries of an archive under a directory without leaving it: every name is checked
/// first; then each directory on the way to an entry is opened relative to the one before it,
/// refusing symbolic links, and each file is written to a temporary name beside its target and
/// renamed once its data are checked.
class ZipExtractor {
public:
    ZipExtractor(const ZipArchive& archive, std::string directory)
        : m_archive(archive), m_directory(std::move(directory)) {}

    void extractAll();

    /// Why `name` may not be written under a directory ("the name is absolute", ...), or the
    /// empty text when it may.
    static std::string unsafeName(const std::string& name);

private:
    void extract(const ZipEntry& entry, int root);
    // Opens (making them when missing) the directories `parts` names below `root`.
    int openDirectories(const ZipEntry& entry, int root, const std::vector<std::string>& parts,
                        std::size_t count);
    void writeFile(const ZipEntry& entry, int directory, const std::string& name);
    [[noreturn]] void fail(const ZipEntry& entry, const std::string& what) const;

    const ZipArchive& m_archive;
    std::string m_directory;
    unsigned m_temporaries = 0;
};

}  // namespace Corvane::Soa::Common

#endif
