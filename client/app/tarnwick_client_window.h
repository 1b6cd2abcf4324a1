#pragma once

#include "api/form_fields.h"
#include "api/service_reply.h"
#include "api/task_kind.h"
#include "projects/core_choice.h"
#include "projects/instance_record.h"
#include "state/client_state.h"

#include <QList>
#include <QMainWindow>
#include <QString>

#include <array>
#include <filesystem>

class QBoxLayout;
class QCheckBox;
class QCloseEvent;
class QComboBox;
class QFrame;
class QGridLayout;
class QLabel;
class QLineEdit;
class QNetworkAccessManager;
class QNetworkReply;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTimer;
class QUrl;

using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_L1;

namespace {

/**
 * The whole client: one window that holds every piece of state and every operation on it.
 *
 * This declaration is the map of the client. Each group below lives in the folder of the same name.
 * Everything runs on the GUI thread. Every outcome, progress and failure alike, ends as one sentence in statusLabel.
 */
class TarnwickClientWindow : public QMainWindow
{
    Q_DISABLE_COPY_MOVE(TarnwickClientWindow)

public:
    // app: start-up, end, and what the client knows about itself
    TarnwickClientWindow();
    ~TarnwickClientWindow() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    static QString generateDeviceId();
    static std::filesystem::path findLogoFile();
    void loadLogo();

    // state: what is remembered between two runs
    static QString stateFilePath();
    void loadState();
    void saveState();

    // api: the one road of every request and every reply
    QString baseUrl() const;
    QUrl serviceUrl(const QString& path) const;
    void sendRequest(TaskKind kind, const QUrl& url, const FormFields& fields, bool sendAuth);
    void handleReply(QNetworkReply* reply);
    void dispatchReply(TaskKind kind, const ServiceReply& reply);
    bool isBusy(TaskKind kind) const;
    void setBusy(TaskKind kind, bool busy);

    // account: pairing this desktop, checking the session, unlinking
    void requestLinkCode();
    void handleLinkStart(const ServiceReply& reply);
    void pollLink();
    void handleLinkPoll(const ServiceReply& reply);
    void acceptLink(const ServiceReply& reply);
    void giveUpPolling(const ServiceReply& reply);
    void openPairingPage();
    void checkSession();
    void handleSession(const ServiceReply& reply);
    void resetAccount();
    void refreshProjects();
    void unlink();
    void forgetAccountTexts();
    void showAccountTexts();

    // projects: the user's GDPS list and the cores the account may use
    void fetchProjects();
    void handleInstances(const ServiceReply& reply);
    void fillProjectTable();
    void openSelectedProject();
    void fillCoreCombo();

    // create: the creation form
    void createInstance();
    FormFields creationFields(const QString& displayName) const;
    void handleCreateInstance(const ServiceReply& reply);
    void resetCreateForm();

    // ui: the widget tree and what in it is enabled
    void buildUi();
    QFrame* buildHeaderCard();
    QFrame* buildStatusCard();
    QBoxLayout* buildLinkRow();
    QFrame* buildLinkCard();
    QFrame* buildAccountCard();
    QWidget* buildListPage();
    void buildProjectTable();
    QWidget* buildCreatePage();
    QGridLayout* buildCreateForm();
    void buildCreateFields();
    void addFocusFrame();
    void connectControls();
    void updateControls();

    // Owned by the window through Qt's object tree, like every widget below.
    QNetworkAccessManager* networkManager = nullptr;
    QTimer* pollTimer = nullptr;

    ClientState state;

    QString linkCode;
    QString approveUrl;
    QString accountNameText;
    QString planText;
    QString limitText;

    std::array<bool, taskKindCount> busyFlags{};

    QLabel* logoLabel = nullptr;
    QLabel* statusLabel = nullptr;
    QLabel* accountNameLabel = nullptr;
    QLabel* planLabel = nullptr;
    QLabel* limitLabel = nullptr;
    QLineEdit* originEdit = nullptr;
    QLineEdit* linkCodeEdit = nullptr;
    QLineEdit* gdpsNameEdit = nullptr;
    QPlainTextEdit* descriptionEdit = nullptr;
    QLineEdit* emojiEdit = nullptr;
    QLineEdit* accentEdit = nullptr;
    QLineEdit* tagsEdit = nullptr;
    QPushButton* generateLinkButton = nullptr;
    QPushButton* openPairingPageButton = nullptr;
    QPushButton* refreshButton = nullptr;
    QPushButton* unlinkButton = nullptr;
    QPushButton* openProjectButton = nullptr;
    QPushButton* createButton = nullptr;
    QTableWidget* projectTable = nullptr;
    QComboBox* coreCombo = nullptr;
    QComboBox* presetCombo = nullptr;
    QCheckBox* publicListingCheck = nullptr;
    QCheckBox* maintenanceCheck = nullptr;

    QList<InstanceRecord> projects;
    QList<CoreChoice> availableCores;
};

} // namespace
