#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace support {

/// Stands in for the desktop: records the addresses that the program opens instead of starting a browser.
/// Handles http, https, file and the schemes named by the test; the empty scheme is that of a relative
/// address.
class OpenedUrls : public QObject
{
    Q_OBJECT

public:
    explicit OpenedUrls(const QStringList& moreSchemes = {});
    ~OpenedUrls() override;
    Q_DISABLE_COPY_MOVE(OpenedUrls)

    /// In the order in which they were opened.
    QList<QUrl> urls() const;
    qsizetype count() const;
    bool isEmpty() const;
    /// The address opened last; an empty one when there is none.
    QUrl last() const;
    void clear();

public Q_SLOTS:
    /// The desktop services call this by its name.
    void record(const QUrl& url);

private:
    QStringList m_schemes;
    QList<QUrl> m_urls;
};

} // namespace support
