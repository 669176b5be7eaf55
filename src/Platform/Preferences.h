// The four preferences and the appearance key, in the user's settings file.
//
// Main thread. All instances of a process share one state: a write through any is seen, and
// signalled, by all at once, and lies in the file when the setter returns. What cannot be written
// holds in this process, and is written together with the next preference that can be. A getter
// sees what another process has written; the signals tell of it once an instance follows the
// others.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <array>
#include <memory>
#include <optional>

class Preferences final : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        bool ejectWhenDone READ ejectWhenDone WRITE setEjectWhenDone NOTIFY ejectWhenDoneChanged)
    Q_PROPERTY(bool thoroughVerify READ thoroughVerify WRITE setThoroughVerify NOTIFY
                   thoroughVerifyChanged)
    Q_PROPERTY(bool retroMode READ retroMode WRITE setRetroMode NOTIFY retroModeChanged)
    Q_PROPERTY(bool hasCompletedOnboarding READ hasCompletedOnboarding WRITE
                   setHasCompletedOnboarding NOTIFY hasCompletedOnboardingChanged)

public:
    explicit Preferences(QObject* parent = nullptr);
    ~Preferences() override;

    bool ejectWhenDone() const;           // default true
    bool thoroughVerify() const;          // default false
    bool retroMode() const;               // default false
    bool hasCompletedOnboarding() const;  // default false

    // The key "AppleInterfaceStyle" as it stands in the file; absent while it is not there. Never
    // written by this program.
    std::optional<QString> appleInterfaceStyle() const;

    // Whether all that this process has set lies in the file.
    bool isSaved() const;

    void setEjectWhenDone(bool value);
    void setThoroughVerify(bool value);
    void setRetroMode(bool value);
    void setHasCompletedOnboarding(bool value);

    // From now on, and while this lives, every instance also signals what other processes write
    // into the file as it lies now. Without a folder that can be watched nothing is signalled.
    void followOtherProcesses();

signals:
    void ejectWhenDoneChanged();
    void thoroughVerifyChanged();
    void retroModeChanged();
    void hasCompletedOnboardingChanged();

private:
    using Values = std::array<bool, 4>;
    Values values() const;
    void tellOfOthers();

    std::unique_ptr<QFileSystemWatcher> m_watcher;
    Values m_told{};  // by the signals
};
