#ifndef CVSOA_TESTS_SUPPORT_TESTKEYS_HPP
#define CVSOA_TESTS_SUPPORT_TESTKEYS_HPP

#include "ScratchDirectory.hpp"

#include <string>

// Makes with the openssl command, in `scratch`: key pairs rsa.pem/rsa.pub.pem, ec.* and ed.*
// (Ed25519); two self-signed CAs, ca.pem/ca.key and other.pem/other.key; signer.pem, the RSA
// key's certificate issued by ca.pem for 30 days, and expired.pem, the same issued for January
// 2020. Returns the command's outcome (status 0 when all went well).
inline CommandOutcome makeTestKeys(const ScratchDirectory& scratch) {
    scratch.write("ca.cnf",
                  "[ca]\ndefault_ca=d\n[d]\ndatabase=index.txt\nnew_certs_dir=.\n"
                  "serial=serial\ndefault_md=sha256\npolicy=p\n[p]\ncommonName=supplied\n");
    return scratch.run(
        "set -e; "
        "openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out rsa.pem; "
        "openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out ec.pem; "
        "openssl genpkey -algorithm ED25519 -out ed.pem; "
        "for k in rsa ec ed; do openssl pkey -in $k.pem -pubout -out $k.pub.pem; done; "
        "for n in ca other; do "
        "openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out $n.key; "
        "openssl req -x509 -key $n.key -subj /CN=$n -days 30 "
        "-addext basicConstraints=critical,CA:TRUE -out $n.pem; done; "
        "openssl req -new -key rsa.pem -subj /CN=signer -out signer.csr; "
        "openssl x509 -req -in signer.csr -CA ca.pem -CAkey ca.key -set_serial 7 -days 30 "
        "-out signer.pem; "
        ": > index.txt; echo 01 > serial; "
        "openssl ca -batch -notext -config ca.cnf -cert ca.pem -keyfile ca.key -in signer.csr "
        "-out expired.pem -startdate 20200101000000Z -enddate 20200201000000Z");
}

#endif
