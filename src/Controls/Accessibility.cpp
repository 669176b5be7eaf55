#include "Accessibility.h"

#include <QAccessibleWidget>
#include <QLabel>
#include <QVariant>

namespace Accessibility {

namespace {

constexpr const char* roleProperty = "accessibleRole";

class WidgetInterface final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QString text(QAccessible::Text kind) const override {
        const auto* label = qobject_cast<QLabel*>(widget());
        return kind == QAccessible::Name && label != nullptr ? label->text()
                                                             : QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    const QVariant role = object->property(roleProperty);
    return widget != nullptr && role.isValid()
               ? new WidgetInterface(widget, static_cast<QAccessible::Role>(role.toInt()))
               : nullptr;
}

}  // namespace

void setRole(QWidget* widget, QAccessible::Role role) {
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(installed)
    widget->setProperty(roleProperty, static_cast<int>(role));
}

void announce(QLabel* label) {
    // Readers listen for a notification that appears; some only for an alert.
    for (const auto kind :
         {QAccessible::NameChanged, QAccessible::ObjectShow, QAccessible::Alert}) {
        QAccessibleEvent event(label, kind);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace Accessibility
