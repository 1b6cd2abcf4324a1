#pragma once

#include <QString>

/// A core on which the account may create a GDPS.
struct CoreChoice
{
    /// What the create request sends; never empty.
    QString key;
    /// What the user sees.
    QString label;
};
