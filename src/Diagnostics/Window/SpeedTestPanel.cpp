#include "SpeedTestPanel.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "Accessibility.h"
#include "ButtonTextColor.h"
#include "ByteCount.h"
#include "OpticalDriveMonitor.h"
#include "SpeedTester.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {
constexpr int barSteps = 10000;
constexpr int discLines = 4;
}  // namespace

SpeedTestPanel::SpeedTestPanel(const OpticalDriveMonitor& monitor, SpeedTester& tester,
                               QWidget* parent)
    : QWidget(parent), m_monitor(monitor), m_tester(tester) {
    const QFont caption = TextStyle::font(TextStyle::Style::Caption);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);

    m_disc =
        new TextLabel(QString(), caption, Appearance::Role::Secondary, TextLabel::Wrap::Yes, this);
    m_disc->setObjectName(QStringLiteral("discLine"));
    // The sheet cannot grow; no disc that keeps to its standard has a name as long as this.
    m_disc->setMaximumLines(discLines);
    column->addWidget(m_disc);

    m_running = new QWidget(this);
    auto* running = new QVBoxLayout(m_running);
    running->setContentsMargins(0, 0, 0, 0);
    running->setSpacing(6);
    m_bar = new QProgressBar(m_running);
    m_bar->setObjectName(QStringLiteral("speedTestBar"));
    m_bar->setAccessibleName(tr("Speed test progress"));
    m_bar->setTextVisible(false);
    running->addWidget(m_bar);
    auto* row = new QHBoxLayout;
    m_bytes =
        new TextLabel(QString(), caption, Appearance::Role::Secondary, TextLabel::Wrap::No, this);
    m_bytes->setObjectName(QStringLiteral("bytesRead"));
    m_cancel = new QPushButton(tr("Cancel"), m_running);
    m_cancel->setObjectName(QStringLiteral("cancelSpeedTest"));
    m_cancel->setAccessibleDescription(tr("Stops the speed test without a result"));
    m_cancel->setAutoDefault(false);
    new ButtonTextColor(Appearance::Role::Destructive, m_cancel);
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_tester.cancel(); });
    row->addWidget(m_bytes);
    row->addStretch();
    row->addWidget(m_cancel);
    running->addLayout(row);
    column->addWidget(m_running);

    m_run = new QPushButton(tr("Run Speed Test"), this);
    m_run->setObjectName(QStringLiteral("runSpeedTest"));
    m_run->setAccessibleDescription(tr("Reads the whole disc and measures the drive's speed"));
    m_run->setAutoDefault(false);
    connect(m_run, &QPushButton::clicked, this, &SpeedTestPanel::startTest);
    column->addWidget(m_run, 0, Qt::AlignLeft);

    m_error = new SymbolLabel(QStringLiteral("xmark.octagon.fill"), QString(), caption,
                              Appearance::Role::Red, TextLabel::Wrap::Yes, this);
    m_error->setObjectName(QStringLiteral("speedTestError"));
    Accessibility::setRole(m_error->textLabel(), QAccessible::Notification);
    column->addWidget(m_error);
    refresh();
}

void SpeedTestPanel::refresh() {
    const auto& disc = m_monitor.disc();
    m_disc->setText(
        disc ? tr("Disc in drive: %1 (%2)").arg(disc->displayName(), rawValue(disc->kind))
             : tr("No disc inserted."));

    const bool running = m_tester.isRunning();
    if (m_tester.progress() >= 0) {
        m_bar->setRange(0, barSteps);
        m_bar->setValue(static_cast<int>(std::lround(m_tester.progress() * barSteps)));
    } else {
        m_bar->setRange(0, 0);
    }
    m_bytes->setText(tr("%1 read").arg(ByteCount::format(m_tester.bytesRead())));
    const bool hadFocus = m_run->hasFocus() || m_cancel->hasFocus();
    m_running->setVisible(running);
    m_run->setVisible(!running);
    m_run->setEnabled(disc.has_value() && m_monitor.driveIdentity().has_value());
    if (hadFocus) {
        (running ? m_cancel : m_run)->setFocus();
    }

    m_error->setText(m_tester.error().value_or(QString()));
    m_error->textLabel()->setAddition(m_tester.reason().value_or(QString()));
    m_error->setVisible(m_tester.error().has_value());
}

void SpeedTestPanel::startTest() {
    const auto& disc = m_monitor.disc();
    const auto& drive = m_monitor.driveIdentity();
    if (disc && drive && !m_tester.isRunning()) {
        m_tester.start(disc->imageSourceBSDName, *drive, disc->kind, disc->totalBytes);
    }
}

#include "moc_SpeedTestPanel.cpp"
