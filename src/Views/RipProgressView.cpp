#include "RipProgressView.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QVBoxLayout>

#include "Accessibility.h"
#include "AquaProgressBar.h"
#include "ByteCount.h"
#include "ISORipper.h"
#include "Leftovers.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

// Steps of the standard bar; finer than the pixels of its width.
constexpr int barSteps = 1000;

}  // namespace

RipState RipState::of(const ISORipper& ripper) {
    RipState state;
    state.isRunning = ripper.isRunning();
    state.bytesWritten = ripper.bytesWritten();
    state.progress = ripper.progress();
    state.speedBytesPerSecond = ripper.speedBytesPerSecond();
    state.finished = ripper.finished();
    if (ripper.error()) {
        state.error = ripper.error()->errorDescription();
        const auto& image = ripper.temporaryImage();
        if (image && QFileInfo::exists(*image)) {
            state.leftImage = image;
        }
    }
    state.isCopying = ripper.isCopying();
    state.isVerifying = ripper.isVerifying();
    state.verifyStatus = ripper.verifyStatus();
    if (ripper.finished()) {
        state.remarks = ripper.remarks().join(QLatin1String("; "));
    }
    return state;
}

std::optional<double> RipState::determinateValue() const {
    return !isVerifying && progress >= 0 ? std::optional(progress) : std::nullopt;
}

QString RipState::bytesWrittenText() const {
    QString written = RipProgressView::tr("%1 written").arg(ByteCount::format(bytesWritten));
    if (!isRunning || isCopying || !(speedBytesPerSecond > 0)) {
        return written;
    }
    return written + QStringLiteral(" \u00b7 ") + ByteCount::formatSpeed(speedBytesPerSecond);
}

std::optional<RipStatus> RipStatus::of(const RipState& state) {
    using Appearance::Role;
    const auto warning = QStringLiteral("exclamationmark.triangle.fill");
    if (state.error) {
        return RipStatus{QStringLiteral("xmark.octagon.fill"), *state.error, Role::Red, 2};
    }
    if (state.isVerifying) {
        return RipStatus{QStringLiteral("checkmark.shield"), RipProgressView::tr("Verifying\u2026"),
                         Role::Secondary, 1};
    }
    if (state.verifyStatus) {
        switch (state.verifyStatus->kind()) {
            case VerifyStatus::Kind::failed:
                return RipStatus{warning, state.verifyStatus->text(), Role::Orange, 2};
            case VerifyStatus::Kind::mismatched:
                return RipStatus{warning, RipProgressView::tr("Verification mismatch"), Role::Red,
                                 1};
            case VerifyStatus::Kind::matched:
                return RipStatus{QStringLiteral("checkmark.seal.fill"),
                                 RipProgressView::tr("Verified"), Role::Green, 1};
        }
    }
    if (state.finished) {
        return RipStatus{QStringLiteral("checkmark.circle.fill"), RipProgressView::tr("Done"),
                         Role::Green, 1};
    }
    return std::nullopt;
}

RipProgressView::RipProgressView(QWidget* parent)
    : QWidget(parent), m_column(new QVBoxLayout(this)), m_bar(new QProgressBar(this)) {
    const QFont caption = TextStyle::font(TextStyle::Style::Caption);
    m_bytesWritten =
        new TextLabel(QString(), caption, Appearance::Role::Secondary, TextLabel::Wrap::No, this);
    m_status = new SymbolLabel(QString(), QString(), caption, Appearance::Role::Secondary,
                               TextLabel::Wrap::Yes, this);
    m_remarks =
        new TextLabel(QString(), caption, Appearance::Role::Secondary, TextLabel::Wrap::No, this);
    m_remarks->setObjectName(QStringLiteral("ripRemarks"));
    m_bar->setObjectName(QStringLiteral("ripProgressBar"));
    m_bar->setAccessibleName(tr("Progress"));
    m_bar->setTextVisible(false);
    m_bytesWritten->setObjectName(QStringLiteral("bytesWritten"));
    m_status->setObjectName(QStringLiteral("ripStatus"));
    Accessibility::setRole(m_status->textLabel(), QAccessible::Notification);
    // A long status gives way to the amount, never the other way round.
    m_bytesWritten->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    m_bytesWritten->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    row->addWidget(m_bytesWritten, 0, Qt::AlignTop);
    row->addStretch(1);
    row->addWidget(m_status, 0, Qt::AlignTop);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(6);
    m_column->addWidget(m_bar);
    m_column->addLayout(row);
    m_column->addWidget(m_remarks);
    show(RipState(), false);
}

void RipProgressView::show(const RipState& state, bool retro) {
    showBar(state.determinateValue(), retro);
    m_bytesWritten->setText(state.bytesWrittenText());
    m_status->textLabel()->setAddition(
        state.leftImage ? tr("What was read is left in \u201c%1\u201d; see \u201c%2\u201d.")
                              .arg(*state.leftImage, Leftovers::commandThatLists(*state.leftImage))
                        : QString());
    m_remarks->setText(state.remarks);
    m_remarks->setAddition(state.remarks);
    m_remarks->setVisible(!state.remarks.isEmpty());
    showStatus(RipStatus::of(state));
}

void RipProgressView::showBar(std::optional<double> value, bool retro) {
    if (retro && m_aquaBar == nullptr) {
        m_aquaBar = new AquaProgressBar(this);
        m_aquaBar->setObjectName(QStringLiteral("aquaProgressBar"));
        m_aquaBar->setAccessibleName(tr("Progress"));
        m_column->insertWidget(0, m_aquaBar);
    }
    if (m_aquaBar != nullptr) {
        m_aquaBar->setFraction(value);
        m_aquaBar->setVisible(retro);
    }
    m_bar->setVisible(!retro);
    m_bar->setRange(0, value ? barSteps : 0);
    if (value) {
        m_bar->setValue(qRound(qBound(0.0, *value, 1.0) * barSteps));
    }
}

void RipProgressView::showStatus(const std::optional<RipStatus>& status) {
    // A status that appears is read out because it appears; one that changes has to be announced.
    const bool wasVisible = m_status->isVisible();
    const QString before = m_status->text();
    m_status->setText(status ? status->text : QString());
    if (status) {
        m_status->setSymbol(status->symbol);
        m_status->setRole(status->role);
        m_status->textLabel()->setMaximumLines(status->maximumLines);
    }
    m_status->setVisible(status.has_value());
    if (status && status->text != before) {
        if (wasVisible) {
            Accessibility::announce(m_status->textLabel());
        }
        emit statusChanged(status->text);
    }
}

#include "moc_RipProgressView.cpp"
