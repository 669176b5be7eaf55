#include "StatusPill.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>

#include "ContinuousCapsule.h"
#include "SymbolIcon.h"
#include "TextLabel.h"
#include "TextStyle.h"

StatusPill::StatusPill(QWidget* parent) : QWidget(parent) {
    m_icon = new SymbolIcon(QString(), 10, Appearance::Role::Secondary, this);
    m_text = new TextLabel(QString(), TextStyle::font(TextStyle::Style::Caption, QFont::Medium),
                           Appearance::Role::Secondary, TextLabel::Wrap::No, this);
    m_text->setObjectName(QStringLiteral("pillText"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 6);
    layout->setSpacing(7);
    layout->addWidget(m_icon);
    layout->addWidget(m_text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StatusPill::show(const QString& symbol, const QString& text, Appearance::Role colour,
                      Appearance::Role fill) {
    const bool changed = m_text->text() != text;
    m_icon->setSymbol(symbol);
    m_icon->setRole(colour);
    m_text->setText(text);
    m_text->setRole(colour);
    m_fill = fill;
    update();
    if (changed) {
        setAccessibleName(text);
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

QString StatusPill::text() const {
    return m_text->text();
}

void StatusPill::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor colour = Appearance::color(m_fill, palette());
    colour.setAlphaF(0.12F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawPath(continuousCapsule(QRectF(rect())));
}

#include "moc_StatusPill.cpp"
