#pragma once

#include "tls_identity.h"

#include <QByteArray>
#include <QSslCertificate>
#include <QString>
#include <QTemporaryDir>

class QDateTime;

namespace support {

/// Certificates for loopback servers, made on demand by the `openssl` command line tool in a folder that goes
/// away with the object. Making keys takes a moment: keep one object per test program. Check isUsable()
/// first.
class TlsMaterial
{
public:
    TlsMaterial();
    ~TlsMaterial() = default;
    Q_DISABLE_COPY_MOVE(TlsMaterial)

    /// False when the tool is missing or has failed; errorText() says why.
    bool isUsable() const;
    QString errorText() const;

    /// The authority to trust; it signs every identity below but the self-signed and the unknown one.
    QSslCertificate authority() const;

    /// For localhost, 127.0.0.1 and ::1.
    TlsIdentity good();
    TlsIdentity selfSigned();
    TlsIdentity expired();
    TlsIdentity notYetValid();
    TlsIdentity wrongHost();
    /// Signed by an authority that nobody trusts.
    TlsIdentity unknownAuthority();

private:
    bool run(const QStringList& arguments);
    bool makeAuthority(const QString& name);
    TlsIdentity makeLeaf(const QString& name, const QString& authority, const QString& extensions,
                         const QDateTime& from, const QDateTime& until);
    QByteArray read(const QString& fileName) const;
    void write(const QString& fileName, const QByteArray& content);

    QTemporaryDir m_folder;
    QString m_errorText;
};

} // namespace support
