#include "gzipped.h"

#include <QtEndian>

#include <array>

namespace faults {

namespace {

std::array<quint32, 256> checksumTable()
{
    std::array<quint32, 256> table{};
    for (quint32 index = 0; quint32 & entry : table) {
        entry = index++;
        for (int bit = 0; bit < 8; ++bit) {
            entry = (entry >> 1U) ^ ((entry & 1U) * 0xEDB88320U);
        }
    }
    return table;
}

/// The CRC-32 that a gzip file ends with.
quint32 checksum(const QByteArray& content)
{
    static const std::array<quint32, 256> table = checksumTable();
    quint32 sum = 0xFFFFFFFFU;
    for (const char byte : content) {
        sum = table.at((sum ^ static_cast<quint8>(byte)) & 0xFFU) ^ (sum >> 8U);
    }
    return ~sum;
}

QByteArray littleEndian(quint32 number)
{
    QByteArray bytes(sizeof number, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

} // namespace

QByteArray gzipped(const QByteArray& content)
{
    const QByteArray head("\x1f\x8b\x08\0\0\0\0\0\0\xff", 10);
    // Qt puts the length in front of the zlib format, which has a head of two bytes and a checksum of four.
    const QByteArray packed = qCompress(content, 9);
    return head + packed.sliced(6, packed.size() - 10) + littleEndian(checksum(content)) +
           littleEndian(static_cast<quint32>(content.size()));
}

} // namespace faults
