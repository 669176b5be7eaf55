#include "ActionRow.h"

#include <QPushButton>

#include "AquaControls.h"

ActionRow::ActionRow(QWidget* owner)
    : m_start(new QPushButton(tr("Start Rip"), owner)),
      m_cancel(new QPushButton(tr("Cancel"), owner)) {
    m_start->setObjectName(QStringLiteral("startButton"));
    m_start->setDefault(true);
    m_cancel->setObjectName(QStringLiteral("cancelButton"));
    addStretch();
    addWidget(m_cancel);
    addWidget(m_start);
    connect(m_start, &QPushButton::clicked, this, &ActionRow::startRequested);
    connect(m_cancel, &QPushButton::clicked, this, &ActionRow::cancelRequested);
    show(State());
}

void ActionRow::show(const State& state) {
    // The keyboard's focus stays on this row's button when one takes the other's place.
    const bool focused = m_start->hasFocus() || m_cancel->hasFocus();
    const bool enabled = !state.working && state.ready;
    m_start->setText(state.finished ? tr("Rip Again") : tr("Start Rip"));
    m_start->setEnabled(enabled);
    m_start->setVisible(!state.working);
    m_cancel->setVisible(state.working);
    if (focused) {
        (state.working ? m_cancel : m_start)->setFocus();
    }
    aquaButton(m_start, state.retro, Tint::blue);
    aquaButton(m_cancel, state.retro, Tint::gray);
    aquaPulse(m_start, state.retro && enabled);
}

void ActionRow::triggerDefault() {
    if (m_start->isVisible()) {
        m_start->click();
    }
}

#include "moc_ActionRow.cpp"
