#include "DestinationRow.h"

#include <QPushButton>

#include "AquaControls.h"
#include "SymbolIcon.h"
#include "TextLabel.h"

DestinationRow::DestinationRow(QWidget* owner)
    : m_path(new TextLabel(QString(), Appearance::Role::Secondary, TextLabel::Wrap::No, owner)),
      m_choose(new QPushButton(tr("Choose\u2026"), owner)) {
    m_path->setObjectName(QStringLiteral("destinationPath"));
    m_path->setElideMode(Qt::ElideMiddle);
    m_choose->setObjectName(QStringLiteral("chooseButton"));
    m_choose->setAccessibleDescription(tr("Chooses where the ISO image is saved"));
    auto* icon = new SymbolIcon(QStringLiteral("folder"), 13, Appearance::Role::Secondary, owner);
    icon->setObjectName(QStringLiteral("destinationIcon"));

    setSpacing(8);
    addWidget(icon);
    addWidget(m_path, 1);
    addWidget(m_choose);
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

#include "moc_DestinationRow.cpp"
