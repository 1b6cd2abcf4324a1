#pragma once

#include <QString>
#include <QUrl>
#include <QWidget>

#include <memory>

class QNetworkReply;

/**
 * The client, as the tests see it: one widget.
 *
 * Its class exists in one translation unit only, the client's own. client_window.cpp is the one file of the tests that
 * belongs to that unit; everything else links to it and looks from outside.
 */
namespace support {

std::unique_ptr<QWidget> newClientWindow();

/// The three texts that the client remembers.
struct SavedTexts
{
    QString origin;
    QString deviceId;
    QString token;
};

/// Single operations of a window, for states that no user's action leads to and for replies that no wire carried.
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
    /// Asks for the project list, with the token if there is one, at any URL.
    void sendInstances(const QUrl& url) const;

    /// What these two do as long as the widget that they look at has not been built.
    QString baseUrlBeforeItsField() const;
    void updateControlsBeforeTheTable() const;

private:
    QWidget& m_window;
};

} // namespace support
