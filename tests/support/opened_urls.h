#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace support {

/// Replaces the desktop's browser: records the addresses that the program opens. Handles http, https, file and the
/// schemes that the test adds; a relative address has the empty scheme.
class OpenedUrls : public QObject
{
    Q_OBJECT

public:
    explicit OpenedUrls(const QStringList& moreSchemes = {})
        : m_schemes(QStringList{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")} + moreSchemes)
    {
        for (const QString& scheme : std::as_const(m_schemes)) {
            QDesktopServices::setUrlHandler(scheme, this, "record");
        }
    }
    ~OpenedUrls() override
    {
        for (const QString& scheme : std::as_const(m_schemes)) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }
    Q_DISABLE_COPY_MOVE(OpenedUrls)

    /// In the order in which they were opened.
    QList<QUrl> urls() const { return m_urls; }
    qsizetype count() const { return m_urls.size(); }
    bool isEmpty() const { return m_urls.isEmpty(); }
    /// The address opened last; empty if there is none.
    QUrl last() const { return m_urls.isEmpty() ? QUrl() : m_urls.constLast(); }

public Q_SLOTS:
    /// QDesktopServices calls this by its name.
    void record(const QUrl& url) { m_urls.append(url); }

private:
    QStringList m_schemes;
    QList<QUrl> m_urls;
};

} // namespace support
