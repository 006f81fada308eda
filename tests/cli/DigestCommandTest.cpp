// cvsoa digest prints and checks what sha256sum prints and checks, byte for byte.
#include <gtest/gtest.h>

#include "ScratchDirectory.hpp"

#include <string>

#ifdef CVSOA_TOOL

namespace {

TEST(DigestCommand, PrintsAndChecksAsSha256sumDoes) {
    if (!ScratchDirectory::has("sha256sum")) {
        GTEST_SKIP() << "sha256sum is not installed";
    }
    const ScratchDirectory scratch;
    ASSERT_EQ(scratch.run("mkdir f").status, 0);
    for (const char* name : {"plain.xml", "sp ace", "back\\slash", "new\nline", "carriage\rreturn",
                             "both\\\nand\r", "-dash", "empty"}) {
        scratch.write(std::string("f/") + name, name == std::string("empty") ? "" : name);
    }
    // A list with a changed file, a missing one, a malformed line, comments, a tagged line and a
    // line ending in CR LF; one with nothing to check.
    const CommandOutcome listed = scratch.run(
        "sha256sum f/* > SUMS && sha256sum --tag f/plain.xml >> SUMS && "
        "printf 'nonsense\\n# comment\\n\\n' >> SUMS && "
        "sha256sum f/empty | sed 's/$/\\r/' >> SUMS && cp SUMS BAD && "
        "printf '%064d  f/missing\\n' 0 >> BAD && echo changed > f/sp\\ ace && "
        "echo nothing > NONE");
    ASSERT_EQ(listed.status, 0) << listed.output;
    const std::string tool = CVSOA_TOOL;
    const struct {
        const char* what;
        std::string sha256sum, cvsoa;
    } cases[] = {
        {"odd names", "sha256sum -- f/*", tool + " digest -- f/*"},
        {"standard input", "printf abc | sha256sum", "printf abc | " + tool + " digest"},
        {"standard input among files", "printf abc | sha256sum f/empty - f/plain.xml",
         "printf abc | " + tool + " digest f/empty - f/plain.xml"},
        {"a missing file", "sha256sum f/empty f/missing f/empty",
         tool + " digest f/empty f/missing f/empty"},
        {"a list", "sha256sum -c SUMS", tool + " digest --check SUMS"},
        {"a list with failures", "sha256sum -c BAD", tool + " digest -c BAD"},
        {"a list on standard input", "sha256sum -c - < BAD", tool + " digest --check - < BAD"},
        {"a list in quiet", "sha256sum -c --quiet BAD", tool + " digest -c --quiet BAD"},
        {"a list of nothing", "sha256sum -c NONE", tool + " digest --check NONE"},
        {"a missing list", "sha256sum -c NOLIST", tool + " digest --check NOLIST"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const CommandOutcome expected = scratch.run(c.sha256sum + " 2>/dev/null");
        const CommandOutcome actual = scratch.run(c.cvsoa + " 2>/dev/null");
        EXPECT_EQ(actual.status, expected.status);
        EXPECT_EQ(actual.output, expected.output);
    }
    EXPECT_EQ(scratch.run(tool + " digest f/missing").output,
              "cvsoa digest: cannot read 'f/missing': No such file or directory\n");
    EXPECT_EQ(scratch.run(tool + " digest -c BAD >/dev/null").output,
              "cvsoa digest: cannot read 'f/missing': No such file or directory\n"
              "cvsoa digest: WARNING: 1 line is improperly formatted\n"
              "cvsoa digest: WARNING: 1 listed file could not be read\n"
              "cvsoa digest: WARNING: 1 computed checksum did NOT match\n");
}

}  // namespace

#endif
