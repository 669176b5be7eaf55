#include "DiagnosticsView.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include "DiagnosticsStore.h"
#include "Divider.h"
#include "FocusRing.h"
#include "HistoryList.h"
#include "OpticalDriveMonitor.h"
#include "SpeedTestPanel.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

constexpr int sheetWidth = 480;
constexpr int sheetHeight = 520;

}  // namespace

DiagnosticsView::DiagnosticsView(const OpticalDriveMonitor& monitor, DiagnosticsStore& diagnostics,
                                 QWidget* parent)
    : QDialog(parent),
      m_monitor(monitor),
      m_diagnostics(diagnostics),
      m_tester(std::make_unique<SpeedTester>()) {
    setObjectName(QStringLiteral("diagnostics"));
    setWindowTitle(tr("Drive Diagnostics"));
    setWindowModality(Qt::WindowModal);
    setFixedSize(sheetWidth, sheetHeight);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 20, 20, 20);
    column->setSpacing(16);
    column->addWidget(makeHeader());
    column->addWidget(makeDrive());
    m_noDrive =
        new SymbolLabel(QStringLiteral("exclamationmark.triangle"), tr("No optical drive found."),
                        TextStyle::font(TextStyle::Style::Body), Appearance::Role::Secondary,
                        TextLabel::Wrap::No, this);
    m_noDrive->setObjectName(QStringLiteral("noDrive"));
    column->addWidget(m_noDrive);
    column->addWidget(new Divider(this));
    m_test = new SpeedTestPanel(m_monitor, *m_tester, this);
    column->addWidget(m_test);
    column->addWidget(new Divider(this));
    m_history = new HistoryList(m_diagnostics, this);
    new FocusRing(m_history->area(), this);
    column->addWidget(m_history, 1);

    m_refresh.setSingleShot(true);
    m_refresh.setInterval(0);
    connect(&m_refresh, &QTimer::timeout, this, &DiagnosticsView::refresh);
    connect(&m_monitor, &OpticalDriveMonitor::objectWillChange, this,
            &DiagnosticsView::scheduleRefresh);
    connect(m_tester.get(), &SpeedTester::objectWillChange, this,
            &DiagnosticsView::scheduleRefresh);
    const auto historyChanged = [this] {
        m_historyChanged = true;
        scheduleRefresh();
    };
    connect(&m_diagnostics, &DiagnosticsStore::resultsChanged, this, historyChanged);
    connect(&m_diagnostics, &DiagnosticsStore::nicknamesChanged, this, historyChanged);
    connect(&m_monitor, &OpticalDriveMonitor::driveIdentityChanged, this,
            &DiagnosticsView::syncNicknameField);
    connect(m_tester.get(), &SpeedTester::resultChanged, this, &DiagnosticsView::recordResult);
    syncNicknameField();
    refresh();
}

QWidget* DiagnosticsView::makeHeader() {
    auto* header = new QWidget(this);
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    auto* title = new TextLabel(tr("Drive Diagnostics"),
                                TextStyle::font(TextStyle::Style::Title2, QFont::Bold),
                                Appearance::Role::Primary, TextLabel::Wrap::No, header);
    title->setObjectName(QStringLiteral("diagnosticsTitle"));
    auto* done = new QPushButton(tr("Done"), header);
    done->setObjectName(QStringLiteral("doneButton"));
    done->setDefault(true);
    connect(done, &QPushButton::clicked, this, &QDialog::accept);
    row->addWidget(title);
    row->addStretch();
    row->addWidget(done);
    return header;
}

QWidget* DiagnosticsView::makeDrive() {
    m_drive = new QWidget(this);
    auto* column = new QVBoxLayout(m_drive);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    m_model = new TextLabel(QString(), TextStyle::font(TextStyle::Style::Headline),
                            Appearance::Role::Primary, TextLabel::Wrap::Yes, m_drive);
    m_model->setObjectName(QStringLiteral("driveModel"));
    column->addWidget(m_model);

    auto* row = new QHBoxLayout;
    m_nickname = new QLineEdit(m_drive);
    m_nickname->setObjectName(QStringLiteral("nicknameField"));
    m_nickname->setPlaceholderText(tr("Nickname (optional)"));
    m_nickname->setAccessibleName(tr("Nickname of the drive"));
    auto* save = new QPushButton(tr("Save"), m_drive);
    save->setObjectName(QStringLiteral("saveNickname"));
    save->setAccessibleDescription(tr("Saves the drive's nickname"));
    save->setAutoDefault(false);
    connect(save, &QPushButton::clicked, this, &DiagnosticsView::saveNickname);
    row->addWidget(m_nickname, 1);
    row->addWidget(save);
    column->addLayout(row);
    return m_drive;
}

void DiagnosticsView::syncNicknameField() {
    const auto& drive = m_monitor.driveIdentity();
    m_nickname->setText(drive ? m_diagnostics.nickname(*drive).value_or(QString()) : QString());
}

void DiagnosticsView::saveNickname() {
    if (const auto& drive = m_monitor.driveIdentity()) {
        m_diagnostics.setNickname(m_nickname->text(), *drive);
    }
}

void DiagnosticsView::recordResult() {
    if (const auto& result = m_tester->result()) {
        m_diagnostics.record(*result);
    }
}

void DiagnosticsView::scheduleRefresh() {
    m_refresh.start();
}

void DiagnosticsView::refresh() {
    const auto& drive = m_monitor.driveIdentity();
    m_model->setText(drive ? drive->modelString() : QString());
    m_drive->setVisible(drive.has_value());
    m_noDrive->setVisible(!drive.has_value());
    m_test->refresh();
    if (m_historyChanged) {
        m_historyChanged = false;
        m_history->refresh();
    }
}

void DiagnosticsView::showEvent(QShowEvent* event) {
    // A window that comes back from the task bar has been there all the time, and so has what was
    // typed into it.
    if (!event->spontaneous()) {
        syncNicknameField();
    }
    QDialog::showEvent(event);
}

void DiagnosticsView::keyPressEvent(QKeyEvent* event) {
    // Return in the field saves the nickname; it must not press "Done" as well.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && m_nickname->hasFocus()) {
        saveNickname();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void DiagnosticsView::done(int result) {
    cancelTest();
    QDialog::done(result);
}

void DiagnosticsView::cancelTest() {
    if (m_tester->isRunning()) {
        m_tester->cancel();
    }
}

DiagnosticsView::~DiagnosticsView() {
    cancelTest();
    if (m_tester->isRunning()) {
        SpeedTester* tester = m_tester.release();
        tester->disconnect();
        tester->setParent(QCoreApplication::instance());
        connect(tester, &SpeedTester::isRunningChanged, tester, &QObject::deleteLater);
    }
}

#include "moc_DiagnosticsView.cpp"
