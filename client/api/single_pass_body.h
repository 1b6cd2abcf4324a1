#pragma once

#include <QByteArray>
#include <QIODevice>

/**
 * A request body that can be read once and never rewound.
 *
 * When a connection closes unanswered, Qt sends a request again, silently and up to four times, as long as it
 * can rewind the body. A creation that was sent may have been carried out, so it must not be sent again: one
 * press of the button is one request.
 */
class SinglePassBody : public QIODevice
{
public:
    /// Opens itself for reading.
    explicit SinglePassBody(QByteArray content);

    /// The whole body is known, so Qt announces its length instead of buffering it in a form that can be rewound.
    bool isSequential() const override { return false; }
    qint64 size() const override { return bytes.size(); }
    /// Both fail once that would go back.
    bool reset() override { return consumed == 0; }
    bool seek(qint64 position) override { return position == consumed && QIODevice::seek(position); }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    QByteArray bytes;
    qint64 consumed = 0;
};
