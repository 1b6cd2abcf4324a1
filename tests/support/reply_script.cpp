#include "reply_script.h"

namespace support {

qint64 ReplyScript::size() const
{
    const qint64 whole = prefix.size() + patternSize + suffix.size();
    return cutAt < 0 ? whole : qMin(cutAt, whole);
}

QByteArray ReplyScript::slice(qint64 offset, qint64 maxSize) const
{
    const qint64 wanted = qMin(maxSize, size() - offset);
    if (wanted <= 0) {
        return {};
    }
    if (offset < prefix.size()) {
        return prefix.mid(offset, wanted);
    }
    const qint64 inPattern = offset - prefix.size();
    if (inPattern >= patternSize) {
        return suffix.mid(inPattern - patternSize, wanted);
    }
    const qint64 size = qMin(wanted, patternSize - inPattern);
    const qint64 phase = inPattern % pattern.size();
    return pattern.repeated((phase + size) / pattern.size() + 1).mid(phase, size);
}

} // namespace support
