#include "Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QSet>
#include <algorithm>
#include <cerrno>
#include <utility>

#include "ErrorText.h"
#include "IniText.h"
#include "SettingsFile.h"
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

struct FileState {
    QByteArray text;  // as it could last be read
    int readError = 0;
    // What could not be written yet: it holds until it can be, so that a switch does not fall back
    // by itself.
    QMap<QByteArray, QByteArray> unsaved;
    int writeError = 0;
};

FileState& stateOf(const QString& file) {
    static QHash<QString, FileState> states;
    return states[file];
}

// A file that cannot be read now says nothing: what was read before holds.
const FileState& freshState() {
    const QString file = settingsFile();
    FileState& state = stateOf(file);
    if (auto text = SettingsFile::read(file)) {
        state.text = std::move(*text);
        state.readError = 0;
    } else {
        state.readError = errno;
    }
    return state;
}

template <typename... Arguments>
void tellAll(void (Preferences::*signal)(Arguments...), Arguments... arguments) {
    const QSet<Preferences*> all = instances();
    for (Preferences* instance : all) {
        // A handler of the signal may have deleted another instance.
        if (instances().contains(instance)) {
            Q_EMIT(instance->*signal)(arguments...);
        }
    }
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
    const FileState& state = freshState();
    const auto kept = state.unsaved.constFind(row.key);
    const QString text =
        (kept != state.unsaved.cend() ? QString::fromLatin1(*kept)
                                      : IniText::value(state.text, row.key).value_or(QString()))
            .trimmed()
            .toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        return true;
    }
    if (text == QLatin1String("false") || text == QLatin1String("0")) {
        return false;
    }
    return row.byDefault;
}

void Preferences::set(Preference preference, bool value) {
    const bool valueBefore = this->value(preference);
    const auto problemBefore = problem();
    const QString file = settingsFile();
    FileState& state = stateOf(file);
    state.unsaved[rowOf(preference).key] = value ? "true" : "false";
    state.writeError = SettingsFile::update(file, state.unsaved);
    if (state.writeError == 0) {
        state.unsaved.clear();
    }
    if (value != valueBefore) {
        tellAll(&Preferences::changed, preference);
    }
    if (problem() != problemBefore) {
        tellAll(&Preferences::problemChanged);
    }
}

std::optional<QString> Preferences::appleInterfaceStyle() const {
    return IniText::value(freshState().text, "AppleInterfaceStyle");
}

QString Preferences::file() {
    return settingsFile();
}

std::optional<QString> Preferences::problem() const {
    const FileState& state = freshState();
    if (state.writeError != 0) {
        return tr("The settings could not be saved: %1.").arg(errorText(state.writeError));
    }
    if (state.readError != 0) {
        return tr("The settings could not be read: %1.").arg(errorText(state.readError));
    }
    return std::nullopt;
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
    const auto remember = [this] {
        m_told = values();
        m_toldProblem = problem();
    };
    remember();
    m_watcher = std::make_unique<QFileSystemWatcher>();
    connect(this, &Preferences::changed, m_watcher.get(), remember);
    connect(this, &Preferences::problemChanged, m_watcher.get(), remember);
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
    const auto toldProblem = std::exchange(m_toldProblem, problem());
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (now.at(i) != told.at(i)) {
            tellAll(&Preferences::changed, preferenceTable.at(i).preference);
        }
    }
    if (toldProblem != problem()) {
        tellAll(&Preferences::problemChanged);
    }
}

#include "moc_Preferences.cpp"
