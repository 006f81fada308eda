// cvsoa sign and cvsoa verify: signatures both ways, certificates against trusted ones, and the
// exit status of each outcome (0 valid, 3 not valid, 1 unreadable input, 2 usage).
#include <gtest/gtest.h>

#include "ScratchDirectory.hpp"
#include "TestKeys.hpp"

#include <string>

#ifdef CVSOA_TOOL

namespace {

TEST(SignCommand, SignsAndVerifiesWithExitStatuses) {
    if (!ScratchDirectory::has("openssl")) {
        GTEST_SKIP() << "openssl is not installed";
    }
    const ScratchDirectory scratch;
    const CommandOutcome made = makeTestKeys(scratch);
    ASSERT_EQ(made.status, 0) << made.output;
    scratch.write("doc", "<doc/>\n");
    scratch.write("other", "<doc/> \n");
    scratch.write("junk.sig", "not a signature\n");
    scratch.write("pass", "secret\n");
    ASSERT_EQ(
        scratch.run("openssl pkey -in ed.pem -aes256 -passout pass:secret -out enc.pem").status, 0);
    const std::string cvsoa = std::string(CVSOA_TOOL) + " ";
    const std::string mismatch =
        "Verification failure: the signature in 'doc.sig' is not that of 'other' with the key in ";
    const struct {
        std::string command;
        int status;
        std::string output;
    } cases[] = {
        {"sign --key rsa.pem doc -o doc.sig", 0, ""},
        {"verify --key rsa.pub.pem doc doc.sig", 0, "Verified OK\n"},
        {"verify --cert signer.pem doc doc.sig", 0, "Verified OK\n"},
        {"verify --cert signer.pem --ca ca.pem doc doc.sig", 0, "Verified OK\n"},
        {"verify --key rsa.pub.pem other doc.sig", 3, mismatch + "'rsa.pub.pem'\n"},
        {"verify --cert signer.pem --ca other.pem doc doc.sig", 3,
         "Verification failure: the certificate 'signer.pem' is not trusted by 'other.pem': "
         "unable to get local issuer certificate\n"},
        {"verify --cert expired.pem --ca ca.pem doc doc.sig", 3,
         "Verification failure: the certificate 'expired.pem' is not trusted by 'ca.pem': "
         "certificate has expired\n"},
        {"sign --key ec.pem - < doc | " + cvsoa + "verify --key ec.pub.pem doc -", 0,
         "Verified OK\n"},
        {"sign --key enc.pem --passphrase-file pass doc -o enc.sig && " + cvsoa +
             "verify --key ed.pub.pem doc enc.sig",
         0, "Verified OK\n"},
        {"sign --key enc.pem --passphrase-env PASS doc", 1,
         "cvsoa sign: the environment variable PASS is not set; set it to the key's "
         "passphrase\n"},
        {"sign --key enc.pem doc", 1,
         "cvsoa sign: cannot read a private key from 'enc.pem': it is encrypted; give its "
         "passphrase\n"},
        {"sign --key ed.pub.pem doc", 1,
         "cvsoa sign: cannot read a private key from 'ed.pub.pem': not a PEM private key\n"},
        {"sign --key ed.pem nodoc", 1,
         "cvsoa sign: cannot read 'nodoc': No such file or directory\n"},
        {"verify --key rsa.pub.pem doc junk.sig", 1,
         "cvsoa verify: cannot read the signature in 'junk.sig': not base64 text\n"},
        {"verify --key rsa.pub.pem doc nosig", 1,
         "cvsoa verify: cannot read 'nosig': No such file or directory\n"},
        {"verify --key rsa.pub.pem --cert signer.pem doc doc.sig", 2, ""},
        {"verify doc doc.sig", 2, ""},
        {"verify --key rsa.pub.pem --ca ca.pem doc doc.sig", 2, ""},
        {"sign doc", 2, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const CommandOutcome outcome = scratch.run(cvsoa + c.command);
        EXPECT_EQ(outcome.status, c.status);
        if (c.status != 2) {
            EXPECT_EQ(outcome.output, c.output);
        }
    }
    // The signature file holds base64 on one line, which openssl reads back to the raw bytes.
    const std::string signature = scratch.read("doc.sig");
    EXPECT_EQ(signature.find('\n'), signature.size() - 1);
    EXPECT_EQ(scratch
                  .run("openssl base64 -d -A -in doc.sig -out doc.bin && "
                       "openssl dgst -sha256 -verify rsa.pub.pem -signature doc.bin doc")
                  .output,
              "Verified OK\n");
}

}  // namespace

#endif
