#include "Surround.h"

#include <QEvent>
#include <algorithm>

namespace {

// Whether nothing that lies behind this widget can be seen through it.
bool hasOwnGround(const QWidget* widget) {
    if (widget->isWindow() || widget->autoFillBackground()) {
        return true;
    }
    const QObjectList& children = widget->children();
    return std::any_of(children.begin(), children.end(), [widget](const QObject* child) {
        const auto* ground = qobject_cast<const QWidget*>(child);
        return ground != nullptr && ground->testAttribute(Qt::WA_OpaquePaintEvent) &&
               ground->isVisibleTo(widget) && ground->geometry().contains(widget->rect());
    });
}

}  // namespace

Surround::Surround(QWidget* view, Layer layer)
    : QWidget(view->parentWidget()), m_view(view), m_layer(layer) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

QRect Surround::frame() const {
    if (!m_view) {
        return {};
    }
    const QWidget* common = parentWidget() == nullptr ? m_view.data() : parentWidget();
    return {m_view->mapTo(common, QPoint(0, 0)) - pos(), m_view->size()};
}

void Surround::place() {
    // Showing and stacking make events of their own.
    if (m_placing || !m_view) {
        return;
    }
    m_placing = true;
    watch();
    QWidget* branch = m_view;
    QWidget* room = m_view->parentWidget();
    QRect frame;
    while (room != nullptr) {
        frame = QRect(m_view->mapTo(room, QPoint(0, 0)), m_view->size());
        if (room->rect().contains(needed(frame)) || hasOwnGround(room)) {
            break;
        }
        branch = room;
        room = room->parentWidget();
    }
    if (room == nullptr) {
        hide();
    } else {
        if (parentWidget() != room) {
            setParent(room);
        }
        stackUnder(branch);
        for (QObject* child : room->children()) {
            auto* other = qobject_cast<Surround*>(child);
            if (other != nullptr && other->m_view == m_view && other->m_layer < m_layer) {
                stackUnder(other);
            }
        }
        setGeometry(extent(frame));
        // Not whether the view can be seen: this is shown and hidden with the window, too.
        setVisible(m_view->isVisibleTo(room));
    }
    placed();
    m_placing = false;
    update();
}

bool Surround::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::ParentChange:
        case QEvent::EnabledChange:
        case QEvent::ZOrderChange:
            place();
            break;
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

void Surround::watch() {
    for (const QPointer<QWidget>& widget : m_watched) {
        if (widget) {
            widget->removeEventFilter(this);
        }
    }
    m_watched.clear();
    for (QWidget* widget = m_view; widget != nullptr; widget = widget->parentWidget()) {
        widget->installEventFilter(this);
        m_watched.emplace_back(widget);
        if (widget->isWindow()) {
            break;
        }
    }
}

#include "moc_Surround.cpp"
