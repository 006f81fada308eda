// ZipArchive on arbitrary bytes: opening either succeeds or throws IOException; every entry is
// then read, tested and streamed with small limits, each read either giving exactly the declared
// size or throwing IOException. Nothing may crash, leak or read out of bounds.
#include <corvane/soa/common/ZipArchive.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

using Corvane::Soa::Common::RandomAccessFile;
using Corvane::Soa::Common::ZipArchive;
using Corvane::Soa::Common::ZipEntry;
using Corvane::Soa::Common::ZipLimits;
using Corvane::Soa::Common::Exceptions::IOException;

// An in-memory file the archive opens through its /proc name, so that no disk is involved.
int memoryFile() {
    static const int descriptor = ::memfd_create("fuzz_zip_archive", 0);
    return descriptor;
}

void readEntry(const ZipArchive& archive, const ZipEntry& entry) {
    try {
        const std::string data = archive.read(entry);
        if (data.size() != entry.getSize()) {
            std::fprintf(stderr, "read %zu bytes of an entry declaring %llu\n", data.size(),
                         static_cast<unsigned long long>(entry.getSize()));
            std::abort();
        }
        std::ostringstream streamed;
        archive.read(entry, streamed);
        if (streamed.str() != data) {
            std::fprintf(stderr, "streaming an entry gave other bytes than reading it\n");
            std::abort();
        }
    } catch (const IOException&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int descriptor = memoryFile();
    if (descriptor < 0 || ::ftruncate(descriptor, 0) != 0 ||
        ::pwrite(descriptor, data, size, 0) != static_cast<ssize_t>(size)) {
        std::abort();
    }
    const ZipLimits limits = ZipLimits().setMaxEntrySize(1 << 20).setRatioAllowance(4096);
    try {
        const ZipArchive archive(RandomAccessFile("/proc/self/fd/" + std::to_string(descriptor)),
                                 limits);
        for (const ZipEntry& entry : archive.getEntries()) {
            entry.getModificationTime();
            readEntry(archive, entry);
        }
        try {
            archive.test();
        } catch (const IOException&) {
        }
    } catch (const IOException&) {
    }
    return 0;
}
