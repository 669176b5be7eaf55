// How a model object writes a published property.
#pragma once

#include <QObject>
#include <utility>

// Emits owner->objectWillChange() before every write, also when the value stays equal, and the
// property's own signal after a write that changed it. Main thread.
template <typename Owner, typename T, typename V>
void publish(Owner* owner, T& field, V&& value, void (Owner::*changed)()) {
    Q_EMIT owner->objectWillChange();
    if (field == value) {
        return;
    }
    field = std::forward<V>(value);
    Q_EMIT(owner->*changed)();
}
