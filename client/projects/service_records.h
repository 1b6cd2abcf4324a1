#pragma once

#include <QString>

/// One GDPS project as the service lists it. A text that the service left out is empty.
struct InstanceRecord
{
    QString core_label;
    QString display_name;
    QString manage_url;
    QString public_url;
    QString slug;
    QString status;
};

/// A core on which the account may create a GDPS.
struct CoreChoice
{
    /// What the create request sends; never empty.
    QString key;
    /// What the user sees.
    QString label;
};
