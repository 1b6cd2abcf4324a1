#include "app/tarnwick_client_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QUrl>

namespace {

QString formTextOr(const QLineEdit* field, const QString& fallback)
{
    const QString text = field->text().trimmed();
    return text.isEmpty() ? fallback : text;
}

} // namespace

/// Checks the creation form and sends it. The form keeps its contents until the service has created the GDPS.
void TarnwickClientWindow::createInstance()
{
    if (!state.isLinked()) {
        statusLabel->setText(u"Link the desktop client first."_s);
        return;
    }
    const QString displayName = gdpsNameEdit->text().trimmed();
    if (displayName.isEmpty()) {
        statusLabel->setText(u"Enter a GDPS name first."_s);
        return;
    }
    const FormFields fields = creationFields(displayName);

    // The text is set even when the next check fails. The token is checked again, right before it is used.
    statusLabel->setText(u"Creating your GDPS from the Tarnwick desktop client..."_s);
    if (isBusy(TaskKind::CreateInstance) || !state.isLinked()) {
        return;
    }
    sendRequest(TaskKind::CreateInstance, serviceUrl(u"/api/pc/instances/create"_s), fields, true);
}

/// The form's contents in the order of the request, without unchecked boxes, and without the core if there is none.
FormFields TarnwickClientWindow::creationFields(const QString& displayName) const
{
    FormFields fields = {
        {u"display_name"_s, displayName},
        {u"description"_s, descriptionEdit->toPlainText().trimmed()},
        {u"emoji_badge"_s, formTextOr(emojiEdit, u"🔥"_s)},
        {u"accent_color"_s, formTextOr(accentEdit, u"#ff8f1f"_s)},
        {u"tags"_s, tagsEdit->text().trimmed()},
        {u"preset_name"_s, presetCombo->currentText()},
    };
    const QString coreKey = coreCombo->currentData(Qt::UserRole).toString();
    if (!coreKey.isEmpty()) {
        fields.append({u"core_key"_s, coreKey});
    }
    if (publicListingCheck->isChecked()) {
        fields.append({u"public_listing"_s, u"true"_s});
    }
    if (maintenanceCheck->isChecked()) {
        fields.append({u"maintenance_mode"_s, u"true"_s});
    }
    return fields;
}

/// Resets the form and fetches the project list, which now has the new GDPS.
void TarnwickClientWindow::handleCreateInstance(const ServiceReply& reply)
{
    if (reply.failed()) {
        statusLabel->setText(reply.errorText);
        return;
    }
    resetCreateForm();
    statusLabel->setText(reply.messageOr(u"Tarnwick created your GDPS from the desktop client."_s));
    fetchProjects();
}

/// Clears what belongs to one GDPS. Emoji, accent, core and preset are kept for the next one.
void TarnwickClientWindow::resetCreateForm() const
{
    gdpsNameEdit->clear();
    descriptionEdit->clear();
    tagsEdit->clear();
    publicListingCheck->setChecked(true);
    maintenanceCheck->setChecked(false);
}
