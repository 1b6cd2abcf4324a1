#include "app/tarnwick_client_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>

#include <array>

/// Enables and disables the buttons and the creation form. Called after every change of the token, a busy flag or the
/// table's current row.
void TarnwickClientWindow::updateControls() const
{
    const bool linked = state.isLinked();
    const bool rowSelected = linked && projectTable != nullptr && projectTable->currentRow() >= 0;
    const bool mayCreate = linked && !isBusy(TaskKind::CreateInstance);

    generateLinkButton->setEnabled(!isBusy(TaskKind::LinkStart));
    openPairingPageButton->setEnabled(true);
    refreshButton->setEnabled(linked && !isBusy(TaskKind::Instances));
    unlinkButton->setEnabled(linked && !isBusy(TaskKind::Session));
    openProjectButton->setEnabled(rowSelected);

    const std::array<QWidget*, 10> createControls = {
        createButton, gdpsNameEdit, descriptionEdit, emojiEdit,          accentEdit,
        tagsEdit,     coreCombo,    presetCombo,     publicListingCheck, maintenanceCheck,
    };
    for (QWidget* control : createControls) {
        control->setEnabled(mayCreate);
    }
}
