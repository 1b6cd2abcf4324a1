#include "app/tarnwick_client_window.h"

#include <QComboBox>

#include <utility>

/// Offers the account's cores; the item's data is the key that a create request sends. The first one is current.
void TarnwickClientWindow::fillCoreCombo()
{
    coreCombo->clear();
    if (availableCores.isEmpty()) {
        coreCombo->addItem(u"No cores available"_s);
        return;
    }
    for (const CoreChoice& core : std::as_const(availableCores)) {
        coreCombo->addItem(core.label, core.key);
    }
}
