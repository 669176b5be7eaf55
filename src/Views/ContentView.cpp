#include "ContentView.h"

#include <QEvent>
#include <QHideEvent>
#include <QMessageBox>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "ActionRow.h"
#include "Appearance.h"
#include "Aqua.h"
#include "CancelConfirmation.h"
#include "DestinationDialog.h"
#include "DestinationRow.h"
#include "DiagnosticsView.h"
#include "DiscSummaryView.h"
#include "Divider.h"
#include "FrameClock.h"
#include "FullDiskAccess.h"
#include "HeaderView.h"
#include "InAppNotifications.h"
#include "OnboardingView.h"
#include "PinstripeBackground.h"
#include "RipProgressView.h"
#include "RipTarget.h"
#include "SymbolLabel.h"
#include "TextStyle.h"

namespace {

constexpr int innerMargin = 20;
constexpr int spacing = 16;

// All main windows' contents, the one that was in front last at the end.
std::vector<const ContentView*>& viewsByFront() {
    static std::vector<const ContentView*> views;
    return views;
}

}  // namespace

ContentView::ContentView(QWidget* parent)
    : QWidget(parent),
      m_session(
          m_monitor, m_ripper,
          [this](const SpeedTestResult& result) { m_diagnostics.record(result); },
          {.thoroughVerify = [this] { return m_preferences.value(Preference::ThoroughVerify); },
           .ejectWhenDone = [this] { return m_preferences.value(Preference::EjectWhenDone); }}) {
    setObjectName(QStringLiteral("contentView"));
    setFixedWidth(contentWidth);
    viewsByFront().insert(viewsByFront().begin(), this);
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(0);
    addParts();
    connectParts();
    refresh();
}

ContentView::~ContentView() {
    std::erase(viewsByFront(), this);
    // The sheets use the models, which go before the child widgets do.
    delete m_diagnosticsSheet;
    delete m_onboardingSheet;
    delete m_confirmation;
    delete m_destinationDialog;
}

void ContentView::addParts() {
    using Appearance::Role;
    m_header = new HeaderView(this);
    m_disc = new DiscSummaryView(this);
    m_noDrive =
        new SymbolLabel(QStringLiteral("exclamationmark.triangle"), tr("No optical drive found."),
                        Role::Secondary, TextLabel::Wrap::No, this);
    m_noDisc = new SymbolLabel(QStringLiteral("opticaldiscdrive"), tr("No disc inserted."),
                               Role::Secondary, TextLabel::Wrap::No, this);
    m_destination = new DestinationRow(this);
    m_lackOfRoom = new SymbolLabel(QStringLiteral("exclamationmark.triangle.fill"), QString(),
                                   TextStyle::font(TextStyle::Style::Caption), Role::Orange,
                                   TextLabel::Wrap::Yes, this);
    m_progress = new RipProgressView(this);
    m_actions = new ActionRow(this);
    m_header->setObjectName(QStringLiteral("header"));
    m_disc->setObjectName(QStringLiteral("discSummary"));
    m_noDrive->setObjectName(QStringLiteral("noDrive"));
    m_noDisc->setObjectName(QStringLiteral("noDisc"));
    m_destination->setObjectName(QStringLiteral("destinationRow"));
    m_lackOfRoom->setObjectName(QStringLiteral("lackOfRoom"));
    m_progress->setObjectName(QStringLiteral("ripProgress"));
    m_actions->setObjectName(QStringLiteral("actionRow"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(innerMargin, innerMargin, innerMargin, innerMargin);
    column->setSpacing(spacing);
    column->addWidget(m_header);
    column->addWidget(new Divider(this));
    column->addWidget(m_disc);
    column->addWidget(m_noDrive);
    column->addWidget(m_noDisc);
    column->addWidget(new Divider(this));
    column->addLayout(m_destination);
    column->addWidget(m_lackOfRoom);
    column->addWidget(m_progress);
    column->addLayout(m_actions);
}

void ContentView::connectParts() {
    connect(&m_refreshTimer, &QTimer::timeout, this, &ContentView::refresh);
    connect(&m_monitor, &OpticalDriveMonitor::objectWillChange, this,
            &ContentView::scheduleRefresh);
    connect(&m_ripper, &ISORipper::objectWillChange, this, &ContentView::scheduleRefresh);
    connect(&m_session, &RipSession::destinationChanged, this, &ContentView::scheduleRefresh);
    connect(&m_session, &RipSession::permissionNeeded, this, &ContentView::showOnboarding);
    connect(&m_preferences, &Preferences::changed, this, &ContentView::scheduleRefresh);

    connect(m_header, &HeaderView::diagnosticsRequested, this, &ContentView::showDiagnostics);
    connect(m_disc, &DiscSummaryView::ejectRequested, this, [this] {
        if (m_monitor.disc()) {
            m_session.ejectDisc(m_monitor.disc()->bsdName);
        }
    });
    connect(m_destination, &DestinationRow::chooseRequested, this, &ContentView::chooseDestination);
    connect(m_actions, &ActionRow::startRequested, this, [this] { m_session.startRip(); });
    connect(m_actions, &ActionRow::cancelRequested, this, &ContentView::confirmCancel);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(key), this);
        connect(shortcut, &QShortcut::activated, m_actions, &ActionRow::triggerDefault);
    }

    connect(&InAppNotifications::shared(), &InAppNotifications::showOnboarding, this, [this] {
        if (isFront()) {
            showOnboarding();
        }
    });
}

bool ContentView::isFront() const {
    return viewsByFront().back() == this;
}

bool ContentView::mayClose() {
    if (!isWorking()) {
        return true;
    }
    confirmCancel();
    m_closeOnceCancelled = true;
    return false;
}

void ContentView::abandon() {
    m_isAbandoned = true;
    delete m_diagnosticsSheet;  // with a test that runs
    if (isWorking()) {
        m_session.cancelUntilNothingIsLeft(ISORipper::CancelRemoves::Nothing);
    }
    scheduleRefresh();
}

void ContentView::chooseDestination() {
    if (!m_monitor.disc() || m_destinationDialog) {
        return;
    }
    auto* dialog = new DestinationDialog(RipSession::defaultFileName(*m_monitor.disc()), this);
    connect(dialog, &DestinationDialog::chosen, this, &ContentView::takeDestination);
    m_destinationDialog = dialog;
    dialog->open();
}

void ContentView::takeDestination(const QString& path) {
    const auto objection = RipTarget::objection(path);
    if (!objection) {
        m_session.setDestination(path);
        return;
    }
    // The desktop's own save dialog may be closed by now, and reading the disc in vain takes long.
    auto* refusal =
        new QMessageBox(QMessageBox::Warning, QString(), *objection, QMessageBox::Ok, this);
    refusal->setObjectName(QStringLiteral("destinationRefusal"));
    refusal->setAttribute(Qt::WA_DeleteOnClose);
    refusal->setWindowModality(Qt::WindowModal);
    refusal->setTextFormat(Qt::PlainText);
    connect(refusal, &QMessageBox::finished, this, &ContentView::chooseDestination,
            Qt::QueuedConnection);
    refusal->open();
}

void ContentView::confirmCancel() {
    if (m_confirmation || !isWorking()) {
        return;
    }
    m_closeOnceCancelled = false;
    m_confirmation =
        new CancelConfirmation(m_ripper.isRunning() ? CancelConfirmation::Subject::Rip
                                                    : CancelConfirmation::Subject::Verification,
                               this);
    connect(m_confirmation, &CancelConfirmation::confirmed, this, [this] {
        m_closeOnceCancelled ? m_session.cancelUntilNothingIsLeft() : m_session.cancel();
    });
    connect(m_confirmation, &CancelConfirmation::rejected, this, [this] {
        if (std::exchange(m_closeOnceCancelled, false)) {
            emit keptOpen();
        }
    });
    m_confirmation->open();
}

void ContentView::showDiagnostics() {
    if (m_diagnosticsSheet) {
        return;
    }
    m_diagnosticsSheet = new DiagnosticsView(m_monitor, m_diagnostics, this);
    m_diagnosticsSheet->setAttribute(Qt::WA_DeleteOnClose);
    m_diagnosticsSheet->open();
}

void ContentView::showOnboarding() {
    if (m_onboardingSheet) {
        m_onboardingSheet->raise();
        m_onboardingSheet->activateWindow();
        return;
    }
    m_onboardingSheet = new OnboardingView([this] { m_onboardingSheet->close(); }, this);
    m_onboardingSheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_onboardingSheet, &QDialog::finished, this,
            [this] { m_preferences.set(Preference::HasCompletedOnboarding, true); });
    m_onboardingSheet->open();
}

void ContentView::offerOnboarding() {
    if (isVisible() && !m_preferences.value(Preference::HasCompletedOnboarding) &&
        !FullDiskAccess::isGranted()) {
        showOnboarding();
    }
}

bool ContentView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        std::erase(viewsByFront(), this);
        viewsByFront().push_back(this);
    }
    // A sheet opens over a window that is there, and does not keep it from appearing.
    if (event->type() == QEvent::Paint && std::exchange(m_justShown, false)) {
        QTimer::singleShot(0, this, &ContentView::offerOnboarding);
    }
    return QWidget::event(event);
}

void ContentView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous()) {
        m_monitor.start();
        refresh();
        m_justShown = true;
    }
}

void ContentView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    // A minimised window is still open.
    if (!event->spontaneous()) {
        m_monitor.stop();
    }
}

void ContentView::scheduleRefresh() {
    if (!m_refreshTimer.isActive()) {
        m_refreshTimer.start();
    }
}

void ContentView::refresh() {
    const bool retro = m_preferences.value(Preference::RetroMode);
    const auto& disc = m_monitor.disc();
    const RipState rip = RipState::of(m_ripper);
    refreshAppearance(retro);

    if (disc) {
        m_disc->show(*disc);
    }
    m_disc->setVisible(disc.has_value());
    m_disc->setEjectEnabled(!isWorking());
    m_noDrive->setVisible(!disc && !m_monitor.driveDetected());
    m_noDisc->setVisible(!disc && m_monitor.driveDetected());

    m_destination->setDestination(m_session.destination());
    // What the rip itself has written is no lack of room.
    if (!isWorking()) {
        const auto lackOfRoom = m_session.lackOfRoom();
        m_lackOfRoom->setVisible(lackOfRoom.has_value());
        m_lackOfRoom->setText(lackOfRoom.value_or(QString()));
    }
    m_destination->setChooseEnabled(!rip.isRunning);
    m_progress->show(rip, retro);
    m_progress->setVisible(rip.isWorthShowing());
    m_actions->show({.working = isWorking(),
                     .finished = rip.finished,
                     .ready = disc && m_session.destination(),
                     .retro = retro});
    refreshConfirmation();
}

void ContentView::refreshAppearance(bool retro) {
    Appearance::follow();
    FrameClock::setReducedMotion(SystemAppearance::reducedMotion());
    if (retro == m_retroShown) {
        return;
    }
    m_retroShown = retro;
    window()->setPalette(retro ? Appearance::palette(SystemAppearance::Scheme::Light) : QPalette());
    setFont(retro ? Aqua::font(13) : QFont());
    m_header->setRetro(retro);
    m_destination->setRetro(retro);
    if (retro && !m_pinstripes) {
        // Behind the content, not in it: the start button's glow reaches beyond the content and
        // lies between the two.
        m_pinstripes = new PinstripeBackground(parentWidget() != nullptr ? parentWidget() : this);
    }
    if (m_pinstripes) {
        m_pinstripes->setVisible(retro);
    }
}

bool ContentView::hasBadNews() const {
    const auto& verdict = m_ripper.verifyStatus();
    return m_ripper.error() || (verdict && verdict->kind() != VerifyStatus::Kind::matched);
}

void ContentView::refreshConfirmation() {
    if (!isWorking()) {
        // Before the question goes, which counts as "Keep Going".
        const bool wasToClose = std::exchange(m_closeOnceCancelled, false);
        if (m_confirmation) {
            m_confirmation->close();
        }
        if (m_isAbandoned || (wasToClose && !hasBadNews())) {
            window()->close();
        } else if (wasToClose) {
            emit keptOpen();
        }
        return;
    }
    if (m_confirmation) {
        m_confirmation->setSubject(m_ripper.isRunning()
                                       ? CancelConfirmation::Subject::Rip
                                       : CancelConfirmation::Subject::Verification);
    }
}

#include "moc_ContentView.cpp"
