#include "RecordedChanges.h"

RecordedChanges::RecordedChanges(ISORipper& ripper) {
    const ISORipper* const source = &ripper;
    QObject::connect(&ripper, &ISORipper::objectWillChange, &m_context, [this] { ++m_announced; });
    QObject::connect(&ripper, &ISORipper::isRunningChanged, &m_context,
                     [this, source] { add("isRunning", source->isRunning() ? "true" : "false"); });
    QObject::connect(&ripper, &ISORipper::bytesWrittenChanged, &m_context, [this, source] {
        add("bytesWritten", QString::number(source->bytesWritten()));
    });
    QObject::connect(&ripper, &ISORipper::progressChanged, &m_context,
                     [this, source] { add("progress", QString::number(source->progress())); });
    QObject::connect(&ripper, &ISORipper::speedBytesPerSecondChanged, &m_context, [this, source] {
        add("speedBytesPerSecond", QString::number(source->speedBytesPerSecond()));
    });
    QObject::connect(&ripper, &ISORipper::finishedChanged, &m_context,
                     [this, source] { add("finished", source->finished() ? "true" : "false"); });
    QObject::connect(&ripper, &ISORipper::errorChanged, &m_context,
                     [this, source] { add("error", asText(source->error())); });
    QObject::connect(&ripper, &ISORipper::isVerifyingChanged, &m_context, [this, source] {
        add("isVerifying", source->isVerifying() ? "true" : "false");
    });
    QObject::connect(&ripper, &ISORipper::verifyStatusChanged, &m_context,
                     [this, source] { add("verifyStatus", asText(source->verifyStatus())); });
    QObject::connect(&ripper, &ISORipper::lastRipAverageBytesPerSecondChanged, &m_context,
                     [this, source] {
                         const auto& speed = source->lastRipAverageBytesPerSecond();
                         add("lastRipAverageBytesPerSecond", speed ? "present" : "absent");
                     });
}

void RecordedChanges::add(const char* property, const QString& value) {
    m_unannounced += m_announced == 0 ? 1 : 0;
    m_announced = 0;
    m_all.append(QString::fromLatin1(property) + u'=' + value);
}

QStringList RecordedChanges::of(const QString& property) const {
    QStringList values;
    for (const QString& change : m_all) {
        if (change.startsWith(property + u'=')) {
            values.append(change.mid(property.size() + 1));
        }
    }
    return values;
}

QStringList RecordedChanges::names() const {
    QStringList names;
    for (const QString& change : m_all) {
        names.append(change.section(u'=', 0, 0));
    }
    return names;
}

QString asText(const std::optional<VerifyStatus>& status) {
    if (!status) {
        return QStringLiteral("absent");
    }
    switch (status->kind()) {
        case VerifyStatus::Kind::matched:
            return QStringLiteral("matched");
        case VerifyStatus::Kind::mismatched:
            return QStringLiteral("mismatched");
        case VerifyStatus::Kind::failed:
            break;
    }
    return QStringLiteral("failed: ") + status->text();
}

QString asText(const std::optional<RipError>& error) {
    return error ? error->kindName() + QStringLiteral(": ") + error->text()
                 : QStringLiteral("absent");
}
