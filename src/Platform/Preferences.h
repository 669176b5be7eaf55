// The preferences and the appearance key, in the user's settings file.
//
// Main thread. All instances of a process share one state: a write through any is seen, and
// signalled, by all at once, and lies in the file when the setter returns. What cannot be written
// holds in this process, and is written together with the next preference that can be. A getter
// sees what another process has written, and what was read last while the file cannot be read; the
// signals tell of it once an instance follows the others.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <array>
#include <memory>
#include <optional>

#include "PreferenceTable.h"

class Preferences final : public QObject {
    Q_OBJECT

public:
    explicit Preferences(QObject* parent = nullptr);
    ~Preferences() override;

    bool value(Preference preference) const;
    void set(Preference preference, bool value);

    // The key "AppleInterfaceStyle" as it stands in the file; absent while it is not there. Never
    // written by this program.
    std::optional<QString> appleInterfaceStyle() const;

    // The path of the file as the environment names it now.
    static QString file();

    // Why something that was set is not in the file, or why the file cannot be read, as a sentence
    // for the user; absent when all is well.
    std::optional<QString> problem() const;

    // From now on, and while this lives, every instance also signals what other processes write
    // into the file as it lies now. Without a folder that can be watched nothing is signalled.
    void followOtherProcesses();

signals:
    void changed(Preference preference);
    void problemChanged();

private:
    using Values = std::array<bool, preferenceTable.size()>;
    Values values() const;
    void tellOfOthers();

    std::unique_ptr<QFileSystemWatcher> m_watcher;
    Values m_told{};  // by the signals
    std::optional<QString> m_toldProblem;
};
