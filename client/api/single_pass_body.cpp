#include "api/single_pass_body.h"

#include <algorithm>
#include <utility>

SinglePassBody::SinglePassBody(QByteArray content) : bytes(std::move(content))
{
    // Unbuffered, since QIODevice's own buffer reads ahead and seeks back.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 SinglePassBody::readData(char* data, qint64 maxSize)
{
    const qint64 count = std::min(maxSize, bytes.size() - consumed);
    std::copy_n(bytes.cbegin() + consumed, count, data);
    consumed += count;
    return count;
}

qint64 SinglePassBody::writeData(const char* /*data*/, qint64 /*maxSize*/)
{
    return -1;
}
