#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// What a TLS server uses: its certificate with the chain to an authority, and its private key.
struct TlsIdentity
{
    QList<QSslCertificate> chain;
    QSslKey key;
};

/// During its lifetime, every TLS client of the program trusts the authority. Objects can be nested.
class TrustedCa
{
public:
    explicit TrustedCa(const QSslCertificate& authority) : m_former(QSslConfiguration::defaultConfiguration())
    {
        QSslConfiguration configuration = m_former;
        configuration.addCaCertificate(authority);
        QSslConfiguration::setDefaultConfiguration(configuration);
    }
    ~TrustedCa() { QSslConfiguration::setDefaultConfiguration(m_former); }
    Q_DISABLE_COPY_MOVE(TrustedCa)

private:
    QSslConfiguration m_former;
};

/// Certificates for loopback servers, made on demand by the `openssl` command line tool in a folder that is removed
/// with the object. Making keys takes a moment, so use one object per test program. Check isUsable() first.
class TlsMaterial
{
public:
    TlsMaterial();
    ~TlsMaterial() = default;
    Q_DISABLE_COPY_MOVE(TlsMaterial)

    /// False if the tool is missing or has failed; errorText() says why.
    bool isUsable() const { return m_errorText.isEmpty(); }
    QString errorText() const { return m_errorText; }

    /// The authority to trust. It signs every identity below except the self-signed and the unknown one.
    QSslCertificate authority() const { return QSslCertificate(read(QStringLiteral("authority.pem"))); }
    /// The same, but ends the program if the tool has failed.
    QSslCertificate usableAuthority() const;

    /// For localhost, 127.0.0.1 and ::1.
    TlsIdentity good() { return makeLeaf({}); }
    TlsIdentity selfSigned() { return makeLeaf({.authority = {}}); }
    TlsIdentity expired() { return makeLeaf({.fromDay = -30, .untilDay = -1}); }
    TlsIdentity notYetValid() { return makeLeaf({.fromDay = 1, .untilDay = 30}); }
    TlsIdentity wrongHost() { return makeLeaf({.host = QStringLiteral("elsewhere")}); }
    /// Signed by an authority that is not trusted.
    TlsIdentity unknownAuthority();

private:
    struct Leaf
    {
        QString authority = QStringLiteral("authority"); ///< empty for a self-signed one
        QString host = QStringLiteral("loopback");       ///< a section of the tool's configuration
        int fromDay = -1;
        int untilDay = 30;
    };

    bool run(const QStringList& arguments);
    bool makeAuthority(const QString& name);
    TlsIdentity makeLeaf(const Leaf& leaf);
    QByteArray read(const QString& fileName) const;
    void write(const QString& fileName, const QByteArray& content);

    QTemporaryDir m_folder;
    QString m_errorText;
};

/// During its lifetime, every TLS client of the program trusts a server with this identity.
class TrustedTls
{
    TlsMaterial m_material;

public:
    const TlsIdentity identity = m_material.good();

private:
    const TrustedCa m_trust{m_material.usableAuthority()};
};

} // namespace support
