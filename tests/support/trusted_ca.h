#pragma once

#include <QSslCertificate>
#include <QSslConfiguration>

namespace support {

/// Every TLS client of the program trusts the authority for as long as the object lives. Objects nest.
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

} // namespace support
