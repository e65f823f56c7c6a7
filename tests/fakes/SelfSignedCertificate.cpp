#include "tests/fakes/SelfSignedCertificate.h"

#include <gtest/gtest.h>

#include <QProcess>

#include "tests/fakes/QtCompat.h"
#include "tests/fakes/Text.h"

namespace tests {

SelfSignedCertificate::SelfSignedCertificate()
    : _files{_directory.FilePath(Text("certificate.pem")), _directory.FilePath(Text("key.pem"))} {
    QProcess openssl;
    openssl.start(Text("openssl"), {Text("req"), Text("-x509"), Text("-newkey"), Text(CertificateKey), Text("-pkeyopt"),
                                    Text(CertificateKeyOption), Text("-nodes"), Text("-days"), Text("2"), Text("-subj"),
                                    Text("/CN=test"), Text("-addext"), Text("subjectAltName=IP:127.0.0.1"),
                                    Text("-keyout"), _files.keyFile, Text("-out"), _files.certificateFile});
    openssl.waitForFinished();
    EXPECT_EQ(openssl.exitCode(), 0) << openssl.readAllStandardError().constData();
}

}  // namespace tests
