#pragma once

#include <QString>
#include <QUrl>
#include <QWidget>

#include <memory>

class QNetworkReply;

/**
 * The client, as the tests see it: one widget.
 *
 * Its class exists in only one translation unit, the client's. client_window.cpp is the only file of the tests in that
 * unit; all others link to it and use the window from outside.
 */
namespace support {

std::unique_ptr<QWidget> newClientWindow();

/// The three texts that the client stores.
struct SavedTexts
{
    QString origin;
    QString deviceId;
    QString token;
};

/// Single operations of a window, for states that no user can cause and for replies that were never sent.
class WindowInside
{
public:
    explicit WindowInside(QWidget& window) : m_window(window) {}

    SavedTexts state() const;
    void setState(const SavedTexts& texts) const;
    void loadState() const;
    void saveState() const;
    void unlink() const;
    bool isBusy(int kind) const;
    void setBusy(int kind, bool busy) const;
    void handleReply(QNetworkReply* reply) const;
    /// Requests the project list from any URL, with the token if there is one.
    void sendInstances(const QUrl& url) const;

    /// The results of these two while the widget that they check does not exist yet.
    QString baseUrlBeforeItsField() const;
    void updateControlsBeforeTheTable() const;

private:
    QWidget& m_window;
};

} // namespace support
