#pragma once

#include <QList>
#include <QPair>
#include <QString>

/// The (name, value) pairs of a request body, in the order in which they are sent. Empty means a GET.
using FormFields = QList<QPair<QString, QString>>;
