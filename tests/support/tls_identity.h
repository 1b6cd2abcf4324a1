#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslKey>

namespace support {

/// What a TLS server shows: its certificate, those that lead up to an authority, and its private key.
struct TlsIdentity
{
    QList<QSslCertificate> chain;
    QSslKey key;
};

} // namespace support
