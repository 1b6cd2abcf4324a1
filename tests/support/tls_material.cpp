#include "tls_material.h"

#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QStringList>

using Qt::StringLiterals::operator""_s;

namespace support {

namespace {

constexpr int tlsToolTimeoutMs = 60000;

/// The tool's whole configuration, so that the system's own is not used.
constexpr QByteArrayView toolConfiguration(R"([req]
distinguished_name = name
prompt = no
[name]
[authority]
basicConstraints = critical, CA:true
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[loopback]
basicConstraints = critical, CA:false
extendedKeyUsage = serverAuth
subjectAltName = DNS:localhost, IP:127.0.0.1, IP:::1
[elsewhere]
basicConstraints = critical, CA:false
extendedKeyUsage = serverAuth
subjectAltName = DNS:elsewhere.example
[ca]
default_ca = signing
[signing]
database = database.txt
serial = serial.txt
new_certs_dir = .
default_md = sha256
policy = anything
unique_subject = no
[anything]
commonName = supplied
)");

QString certificateTime(int daysFromNow)
{
    return QDateTime::currentDateTimeUtc().addDays(daysFromNow).toString(u"yyyyMMddHHmmss'Z'"_s);
}

} // namespace

TlsMaterial::TlsMaterial()
{
    write(u"tool.cnf"_s, toolConfiguration.toByteArray());
    write(u"database.txt"_s, {});
    write(u"serial.txt"_s, "01\n");
    makeAuthority(u"authority"_s) && run({u"genrsa"_s, u"-out"_s, u"leaf.key"_s, u"2048"_s});
}

QSslCertificate TlsMaterial::usableAuthority() const
{
    if (!isUsable()) {
        qFatal("No certificates: %s", qPrintable(m_errorText));
    }
    return authority();
}

TlsIdentity TlsMaterial::unknownAuthority()
{
    const QString stranger = u"stranger"_s;
    return makeAuthority(stranger) ? makeLeaf({.authority = stranger}) : TlsIdentity();
}

bool TlsMaterial::run(const QStringList& arguments)
{
    if (!isUsable()) {
        return false;
    }
    QProcess tool;
    tool.setWorkingDirectory(m_folder.path());
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.start(u"openssl"_s, arguments);
    if (!tool.waitForFinished(tlsToolTimeoutMs)) {
        m_errorText = u"openssl does not run: "_s + tool.errorString();
    } else if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        m_errorText =
            u"openssl %1 failed: %2"_s.arg(arguments.join(QLatin1Char(' ')), QString::fromLocal8Bit(tool.readAll()));
    }
    return isUsable();
}

bool TlsMaterial::makeAuthority(const QString& name)
{
    return run({u"req"_s, u"-config"_s, u"tool.cnf"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s,
                u"-keyout"_s, name + u".key"_s, u"-out"_s, name + u".pem"_s, u"-days"_s, u"30"_s, u"-extensions"_s,
                u"authority"_s, u"-subj"_s, u"/CN=Loopback test "_s + name});
}

TlsIdentity TlsMaterial::makeLeaf(const Leaf& leaf)
{
    const QStringList signer = leaf.authority.isEmpty() ? QStringList{u"-selfsign"_s, u"-keyfile"_s, u"leaf.key"_s}
                                                        : QStringList{u"-cert"_s, leaf.authority + u".pem"_s,
                                                                      u"-keyfile"_s, leaf.authority + u".key"_s};
    const bool isMade =
        run({u"req"_s, u"-config"_s, u"tool.cnf"_s, u"-new"_s, u"-key"_s, u"leaf.key"_s, u"-out"_s, u"leaf.csr"_s,
             u"-subj"_s, u"/CN=Loopback test"_s}) &&
        run(QStringList{u"ca"_s, u"-config"_s, u"tool.cnf"_s, u"-batch"_s, u"-notext"_s, u"-in"_s, u"leaf.csr"_s,
                        u"-out"_s, u"leaf.pem"_s, u"-extensions"_s, leaf.host, u"-startdate"_s,
                        certificateTime(leaf.fromDay), u"-enddate"_s, certificateTime(leaf.untilDay)} +
            signer);
    if (!isMade) {
        return {};
    }
    TlsIdentity identity{.chain = {QSslCertificate(read(u"leaf.pem"_s))},
                         .key = QSslKey(read(u"leaf.key"_s), QSsl::Rsa)};
    if (!leaf.authority.isEmpty()) {
        identity.chain.append(QSslCertificate(read(leaf.authority + u".pem"_s)));
    }
    return identity;
}

QByteArray TlsMaterial::read(const QString& fileName) const
{
    QFile file(m_folder.filePath(fileName));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TlsMaterial::write(const QString& fileName, const QByteArray& content)
{
    QFile file(m_folder.filePath(fileName));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        m_errorText = file.errorString();
    }
}

} // namespace support
