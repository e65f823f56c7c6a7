#pragma once

#include <QSsl>
#include <QtGlobal>

namespace tests {

// What the server of the tests needs of Qt 5, and what Qt 4.8 has in its place: it knows no elliptic curves.
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
using SocketDescriptor = qintptr;
const QSsl::KeyAlgorithm CertificateKeyAlgorithm = QSsl::Ec;
const char* const CertificateKey = "ec";
const char* const CertificateKeyOption = "ec_paramgen_curve:prime256v1";
#else
using SocketDescriptor = int;
const QSsl::KeyAlgorithm CertificateKeyAlgorithm = QSsl::Rsa;
const char* const CertificateKey = "rsa";
const char* const CertificateKeyOption = "rsa_keygen_bits:2048";
#endif

}  // namespace tests
