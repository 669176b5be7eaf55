#include "FocusRing.h"

#include <QEvent>
#include <QPainter>

#include "Appearance.h"

namespace {

constexpr int distance = 5;
constexpr int thickness = 2;

}  // namespace

FocusRing::FocusRing(QWidget* watched, QWidget* parent) : QWidget(parent), m_watched(watched) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    lower();
    watched->installEventFilter(this);
    follow();
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::FocusIn:
        case QEvent::FocusOut:
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
            follow();
            break;
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

void FocusRing::follow() {
    const QRect place(m_watched->mapTo(parentWidget(), QPoint(0, 0)), m_watched->size());
    setGeometry(place.marginsAdded({distance, distance, distance, distance}));
    setVisible(m_watched->hasFocus() && m_watched->isVisible());
}

void FocusRing::paintEvent(QPaintEvent* /*event*/) {
    // Who uses the pointer needs no ring.
    if (!window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Appearance::color(Appearance::Role::Accent, palette()), thickness));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
}

#include "moc_FocusRing.cpp"
