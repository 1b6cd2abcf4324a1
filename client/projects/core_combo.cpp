#include "app/tarnwick_client_window.h"

#include <QComboBox>

/// Fills the combo box with the account's cores. The item data is the key; the first item becomes the current one.
void TarnwickClientWindow::fillCoreCombo() const
{
    coreCombo->clear();
    if (availableCores.isEmpty()) {
        coreCombo->addItem(u"No cores available"_s);
        return;
    }
    for (const CoreChoice& core : availableCores) {
        coreCombo->addItem(core.label, core.key);
    }
}
