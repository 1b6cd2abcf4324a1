#include "opened_urls.h"

#include <QDesktopServices>

using Qt::StringLiterals::operator""_s;

namespace support {

OpenedUrls::OpenedUrls(const QStringList& moreSchemes)
    : m_schemes(QStringList{u"http"_s, u"https"_s, u"file"_s} + moreSchemes)
{
    for (const QString& scheme : std::as_const(m_schemes)) {
        QDesktopServices::setUrlHandler(scheme, this, "record");
    }
}

OpenedUrls::~OpenedUrls()
{
    for (const QString& scheme : std::as_const(m_schemes)) {
        QDesktopServices::unsetUrlHandler(scheme);
    }
}

QList<QUrl> OpenedUrls::urls() const
{
    return m_urls;
}

qsizetype OpenedUrls::count() const
{
    return m_urls.size();
}

bool OpenedUrls::isEmpty() const
{
    return m_urls.isEmpty();
}

QUrl OpenedUrls::last() const
{
    return m_urls.isEmpty() ? QUrl() : m_urls.constLast();
}

void OpenedUrls::clear()
{
    m_urls.clear();
}

void OpenedUrls::record(const QUrl& url)
{
    m_urls.append(url);
}

} // namespace support
