#pragma once

#include "api/service_reply.h"
#include "api/service_request.h"
#include "projects/service_records.h"
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
class QPalette;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTimer;
class QUrl;

// All .cpp files of the client are compiled as one translation unit. So the class below can have internal linkage
// although many files define its operations, and the literal operators are declared here once for all of them.
using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_L1;

namespace {

/**
 * The whole client: one window with all state and all operations.
 *
 * Each group of operations below is defined in the folder of the same name. Everything runs on the GUI thread. All
 * feedback, including progress and failures, is shown in statusLabel.
 */
class TarnwickClientWindow : public QMainWindow
{
    Q_DISABLE_COPY_MOVE(TarnwickClientWindow)

public:
    // app: start-up and end, device identifier, logo
    TarnwickClientWindow();
    ~TarnwickClientWindow() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    static QString generateDeviceId();
    static std::filesystem::path findLogoFile();
    void loadLogo();

    // state: the state file
    static QString stateFilePath();
    void loadState();
    void saveState() const;

    // api: sends every request, receives every reply
    QString baseUrl() const;
    QUrl serviceUrl(const QString& path) const;
    void sendRequest(TaskKind kind, const QUrl& url, const FormFields& fields, bool sendAuth);
    void handleReply(QNetworkReply* reply);
    void dispatchReply(TaskKind kind, const ServiceReply& reply);
    bool isBusy(TaskKind kind) const;
    void setBusy(TaskKind kind, bool busy);

    // account: link flow, session check, unlinking
    void requestLinkCode();
    void handleLinkStart(const ServiceReply& reply);
    void pollLink();
    void handleLinkPoll(const ServiceReply& reply);
    void acceptLink(const ServiceReply& reply);
    void giveUpPolling(const ServiceReply& reply);
    void openPairingPage() const;
    void checkSession();
    void handleSession(const ServiceReply& reply);
    void resetAccount();
    void refreshProjects();
    void unlink();
    void resetAccountTexts();
    void showAccountTexts() const;

    // projects: project list, core choices
    void fetchProjects();
    void handleInstances(const ServiceReply& reply);
    void fillProjectTable() const;
    void openSelectedProject() const;
    void fillCoreCombo() const;

    // create: the creation form
    void createInstance();
    FormFields creationFields(const QString& displayName) const;
    void handleCreateInstance(const ServiceReply& reply);
    void resetCreateForm() const;

    // ui: widget tree, theme, enabling of controls
    static QPalette themePalette();
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
    void updateControls() const;

    // Owned through Qt's object tree, like the widgets below.
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
