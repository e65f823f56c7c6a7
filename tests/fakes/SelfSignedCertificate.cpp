#include "tests/fakes/SelfSignedCertificate.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace tests {

SelfSignedCertificate::SelfSignedCertificate()
    : _files{_directory.filePath(QStringLiteral("certificate.pem")), _directory.filePath(QStringLiteral("key.pem"))} {
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
                   QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"), QStringLiteral("/CN=test"),
                   QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1"), QStringLiteral("-keyout"),
                   _files.keyFile, QStringLiteral("-out"), _files.certificateFile});
    openssl.waitForFinished();
    EXPECT_EQ(openssl.exitCode(), 0) << openssl.readAllStandardError().toStdString();
}

}  // namespace tests
