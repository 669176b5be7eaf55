#include "Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QSet>
#include <QSettings>
#include <algorithm>
#include <utility>

#include "UserFolders.h"

namespace {

// Every instance of this process, to be told of a write through any of them.
QSet<Preferences*>& instances() {
    static QSet<Preferences*> all;
    return all;
}

// Not QSettings' own idea of the folder: it looks at the environment only once.
QString settingsFile() {
    QString folder = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
    if (!folder.startsWith(QLatin1Char('/'))) {
        folder = UserFolders::home() + QStringLiteral("/.config");
    }
    return folder + QStringLiteral("/Spindrift/Spindrift.conf");
}

// What could not be written yet, by file and key: it holds until it can be, so that a switch does
// not fall back by itself.
using Unsaved = QMap<QString, bool>;
QHash<QString, Unsaved>& unsaved() {
    static QHash<QString, Unsaved> values;
    return values;
}

bool save(const QString& file, const Unsaved& values) {
    QSettings settings(file, QSettings::IniFormat);
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        settings.setValue(value.key(), value.value());
    }
    settings.sync();
    return settings.status() != QSettings::AccessError;
}

}  // namespace

Preferences::Preferences(QObject* parent) : QObject(parent) {
    instances().insert(this);
}

Preferences::~Preferences() {
    instances().remove(this);
}

bool Preferences::value(Preference preference) const {
    const PreferenceRow& row = rowOf(preference);
    const auto key = QLatin1String(row.key);
    const QString file = settingsFile();
    const Unsaved kept = unsaved().value(file);
    if (const auto value = kept.constFind(key); value != kept.cend()) {
        return *value;
    }
    const QString text =
        QSettings(file, QSettings::IniFormat).value(key).toString().trimmed().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    if (text == QLatin1String("false") || text == QLatin1String("0")) {
        return false;
    }
    return row.byDefault;
}

void Preferences::set(Preference preference, bool value) {
    const bool before = this->value(preference);
    const QString file = settingsFile();
    unsaved()[file][QLatin1String(rowOf(preference).key)] = value;
    if (save(file, unsaved().value(file))) {
        unsaved().remove(file);
    }
    if (value != before) {
        tellAll(preference);
    }
}

std::optional<QString> Preferences::appleInterfaceStyle() const {
    const QVariant value = QSettings(settingsFile(), QSettings::IniFormat)
                               .value(QStringLiteral("AppleInterfaceStyle"));
    return value.isValid() ? std::optional(value.toString()) : std::nullopt;
}

bool Preferences::isSaved() const {
    return !unsaved().contains(settingsFile());
}

void Preferences::tellAll(Preference preference) {
    const QSet<Preferences*> all = instances();
    for (Preferences* instance : all) {
        // A handler of the signal may have deleted another instance.
        if (instances().contains(instance)) {
            Q_EMIT instance->changed(preference);
        }
    }
}

Preferences::Values Preferences::values() const {
    Values values{};
    std::transform(preferenceTable.cbegin(), preferenceTable.cend(), values.begin(),
                   [this](const PreferenceRow& row) { return value(row.preference); });
    return values;
}

void Preferences::followOtherProcesses() {
    const QString file = settingsFile();
    const QString folder = QFileInfo(file).path();
    // The folder, because a new file takes the place of the old one; it may be the first.
    QDir().mkpath(folder);
    m_told = values();
    m_watcher = std::make_unique<QFileSystemWatcher>();
    connect(this, &Preferences::changed, m_watcher.get(), [this] { m_told = values(); });
    const auto watch = [this, folder, file] {
        for (const QString& path : {folder, file}) {
            if (QFileInfo::exists(path)) {
                m_watcher->addPath(path);
            }
        }
    };
    const auto look = [this, watch] {
        watch();
        tellOfOthers();
    };
    watch();
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this, look);
    connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, this, look);
}

void Preferences::tellOfOthers() {
    const auto now = values();
    const auto told = std::exchange(m_told, now);
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (now.at(i) != told.at(i)) {
            tellAll(preferenceTable.at(i).preference);
        }
    }
}
