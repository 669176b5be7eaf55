#include "DestinationRow.h"

#include <QHBoxLayout>
#include <QPushButton>

#include "AquaControls.h"
#include "SymbolIcon.h"
#include "TextLabel.h"

DestinationRow::DestinationRow(QWidget* parent)
    : QWidget(parent),
      m_path(new TextLabel(QString(), Appearance::Role::Secondary, TextLabel::Wrap::No, this)),
      m_choose(new QPushButton(tr("Choose\u2026"), this)) {
    m_path->setObjectName(QStringLiteral("destinationPath"));
    m_path->setElideMode(Qt::ElideMiddle);
    m_choose->setObjectName(QStringLiteral("chooseButton"));
    m_choose->setAccessibleDescription(tr("Chooses where the ISO image is saved"));
    auto* icon = new SymbolIcon(QStringLiteral("folder"), 13, Appearance::Role::Secondary, this);
    icon->setObjectName(QStringLiteral("destinationIcon"));

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(icon);
    row->addWidget(m_path, 1);
    row->addWidget(m_choose);
    setDestination(std::nullopt);
    connect(m_choose, &QPushButton::clicked, this, &DestinationRow::chooseRequested);
}

void DestinationRow::setDestination(const std::optional<QString>& path) {
    m_path->setText(path.value_or(tr("No destination chosen")));
    m_path->setRole(path ? Appearance::Role::Primary : Appearance::Role::Secondary);
}

void DestinationRow::setChooseEnabled(bool enabled) {
    m_choose->setEnabled(enabled);
}

void DestinationRow::setRetro(bool retro) {
    aquaButton(m_choose, retro, Tint::gray);
}
