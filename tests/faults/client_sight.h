#pragma once

#include "support/creation_form.h"
#include "support/service_bench.h"

#include <QString>
#include <QStringList>

namespace faults {

/// What a person sees of the client, and what it has saved: everything that the outcome of a request can change.
struct ClientSight
{
    QString status;
    QString url;
    QString code;
    bool polls = false;
    QStringList account;
    /// Label and key of each.
    QStringList cores;
    int rows = 0;
    /// The texts of its cells.
    QStringList firstRow;
    QStringList enabledControls;
    support::CreationForm form;
    QString savedOrigin;
    QString savedDevice;
    QString savedToken;

    /// One line for each; two lists compared show the first line that differs.
    QStringList words() const;
};

/// The names of what is enabled in a client that waits for nothing and has that many projects.
QStringList idleControls(bool linked, int rows);

/// A core as the sight has it.
QString coreLine(const QString& label, const QString& key);

/// What the window shows now.
ClientSight sightOf(support::ServiceBench& bench);

} // namespace faults
