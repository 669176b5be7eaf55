// The published changes of a rip engine, as text, in their order: "isRunning=true".
#pragma once

#include <QObject>
#include <QStringList>

#include "ISORipper.h"

class RecordedChanges final {
public:
    explicit RecordedChanges(ISORipper& ripper);

    const QStringList& all() const { return m_all; }
    // Those of one property, values only.
    QStringList of(const QString& property) const;
    // Every property's name in order, without the values.
    QStringList names() const;
    void clear() { m_all.clear(); }
    // How often something was written without objectWillChange() before it.
    int unannounced() const { return m_unannounced; }

private:
    void add(const char* property, const QString& value);

    QObject m_context;
    QStringList m_all;
    int m_announced = 0;
    int m_unannounced = 0;
};

// A verdict or an error as text: "matched", "failed: why", "absent".
QString asText(const std::optional<VerifyStatus>& status);
QString asText(const std::optional<RipError>& error);
