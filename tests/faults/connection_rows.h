#pragma once

#include "fault_outcome.h"

#include "support/reply.h"
#include "support/service_bench.h"

#include <QByteArray>
#include <QList>

namespace faults {

/// One way in which a service or a network can fail a call, and what has to come of it.
struct ConnectionRow
{
    QByteArray name;
    support::Reply reply;
    FaultOutcome outcome;
};

/// The connection ends too early, or what comes on it is no answer.
QList<ConnectionRow> brokenOffRows(support::Call call);
/// The body comes in a form that cannot be read.
QList<ConnectionRow> badBodyRows();
/// Odd, but nothing is missing.
QList<ConnectionRow> harmlessRows();
/// Nothing moves any more, and the connection stays.
QList<ConnectionRow> stalledRows();

} // namespace faults
