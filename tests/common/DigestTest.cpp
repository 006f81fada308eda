// Digest: SHA-256 at once, in pieces, from streams and files, against known values and sha256sum.
#include <gtest/gtest.h>

#include "ScratchDirectory.hpp"

#include <corvane/soa/common/Digest.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>

#include <sstream>
#include <string>
#include <utility>

namespace {

using Corvane::Soa::Common::Digest;
using Corvane::Soa::Common::Exceptions::IOException;

constexpr const char* kEmpty = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

// Bytes of every value, longer than the blocks files are read in.
std::string sampleBytes() {
    std::string bytes(600 * 1024 + 7, '\0');
    unsigned state = 12345;
    for (char& c : bytes) {
        state = state * 1103515245U + 12345U;
        c = static_cast<char>(state >> 16U);
    }
    return bytes;
}

TEST(Digest, KnownValuesAtOnceAndInPieces) {
    const struct {
        std::string text, hex;
    } cases[] = {
        {"", kEmpty},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Digest::hexOf(c.text), c.hex);
        Digest digest;
        for (const char byte : c.text) {
            digest.update(&byte, 1);
        }
        EXPECT_EQ(digest.hex(), c.hex);
        EXPECT_EQ(digest.hex(), kEmpty) << "taking the result starts the digest over";
        std::istringstream in(c.text);
        EXPECT_EQ(digest.update(in).hex(), c.hex);
    }
    const Digest::Bytes abc = Digest::of("abc");
    EXPECT_EQ(abc[0], 0xba);
    EXPECT_EQ(abc[31], 0xad);
}

TEST(Digest, CopiesCarryOnAndMovedFromObjectsStartOver) {
    Digest prefix;
    prefix.update("shared prefix, ");
    Digest first = prefix;
    Digest second;
    second = prefix;
    EXPECT_EQ(first.update("first").hex(), Digest::hexOf("shared prefix, first"));
    EXPECT_EQ(second.update("second").hex(), Digest::hexOf("shared prefix, second"));
    EXPECT_EQ(prefix.hex(), Digest::hexOf("shared prefix, "));

    Digest moved(std::move(first));
    EXPECT_EQ(moved.update("x").hex(), Digest::hexOf("x"));
    // A moved-from digest is usable again, empty.
    // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(first.update("y").hex(), Digest::hexOf("y"));
    second.update("discarded");
    second.reset();
    EXPECT_EQ(second.hex(), kEmpty);
}

TEST(Digest, FilesAgreeWithSha256sum) {
    const ScratchDirectory scratch;
    const std::string bytes = sampleBytes();
    scratch.write("sample.bin", bytes);
    const std::string hex = Digest::hexOf(bytes);
    EXPECT_EQ(Digest::hexOfFile(scratch.path("sample.bin")), hex);
    EXPECT_EQ(Digest::toHex(Digest::ofFile(scratch.path("sample.bin"))), hex);
    if (ScratchDirectory::has("sha256sum")) {
        EXPECT_EQ(scratch.run("sha256sum sample.bin").output, hex + "  sample.bin\n");
    }
    // Any split of the bytes gives the same digest.
    for (const std::size_t split : {std::size_t{1}, std::size_t{64}, std::size_t{262144}}) {
        Digest digest;
        digest.update(bytes.substr(0, split)).update(bytes.substr(split));
        EXPECT_EQ(digest.hex(), hex) << split;
    }
}

TEST(Digest, UnreadableFilesNameTheFile) {
    const ScratchDirectory scratch;
    const struct {
        std::string path, message;
    } cases[] = {
        {scratch.path("missing"),
         "cannot read '" + scratch.path("missing") + "': No such file or directory"},
        {scratch.path(""), "cannot read '" + scratch.path("") + "': Is a directory"},
    };
    for (const auto& c : cases) {
        try {
            Digest::ofFile(c.path);
            ADD_FAILURE() << c.path;
        } catch (const IOException& e) {
            EXPECT_EQ(e.getMessage(), c.message);
        }
    }
}

}  // namespace
