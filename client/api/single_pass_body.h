#pragma once

#include <QByteArray>
#include <QIODevice>

/**
 * A request body that can be read once and cannot be rewound.
 *
 * When a connection closes without an answer, Qt silently sends the request again, up to four times, if it can rewind
 * the body. The service may have created the GDPS already, so a press of the button must be one request.
 */
class SinglePassBody : public QIODevice
{
public:
    /// Opens the device for reading.
    explicit SinglePassBody(QByteArray content);

    /// Qt takes Content-Length from it. It would buffer the body of a sequential device, and could rewind the buffer.
    qint64 size() const override { return bytes.size(); }
    /// Both fail unless the position stays the same.
    bool reset() override { return consumed == 0; }
    bool seek(qint64 position) override { return position == consumed && QIODevice::seek(position); }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    QByteArray bytes;
    qint64 consumed = 0;
};
