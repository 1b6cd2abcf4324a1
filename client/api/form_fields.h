#pragma once

#include <QList>
#include <QString>

#include <utility>

/// The (name, value) pairs of a request body, in the order in which they are sent. Empty means a GET.
using FormFields = QList<std::pair<QString, QString>>;
