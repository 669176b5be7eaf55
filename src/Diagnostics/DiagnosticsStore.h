// The history of measured speeds and the drives' nicknames, kept in two small JSON files.
//
// Owned by one window, lives on the main thread. Reads both files when it is made and rewrites one
// in full after each change; what cannot be read is empty, what cannot be written stays in memory.
// The stores of one process that share the files share their changes too, so that the second
// window's next record does not take the first one's away. Another process's changes are not seen:
// a program that has no window makes its store only when it has something to change.
#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

#include "Descriptor.h"
#include "DriveIdentity.h"
#include "SpeedTestResult.h"

class DiagnosticsStore final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<SpeedTestResult> results READ results NOTIFY resultsChanged)

public:
    // Whether other programs that change the files wait until the store has gone, or only while it
    // writes.
    enum class OtherPrograms { MayWrite, Wait };

    explicit DiagnosticsStore(QObject* parent = nullptr,
                              OtherPrograms others = OtherPrograms::MayWrite);
    ~DiagnosticsStore() override;

    const QList<SpeedTestResult>& results() const { return m_results; }      // newest first
    const QMap<QString, QString>& nicknames() const { return m_nicknames; }  // by drive key
    const QString& resultsPath() const { return m_resultsPath; }
    const QString& nicknamesPath() const { return m_nicknamesPath; }

    // The application's folder under the user's data folder, or under the temporary one when there
    // is none; made if need be. In the temporary one nobody else can use it, and none that is
    // another user's is used.
    static QString applicationFolder(const std::optional<QString>& dataFolder);

    std::optional<QString> nickname(const DriveIdentity& drive) const;
    // Blanks and tabs at both ends are dropped; an empty name removes the nickname.
    void setNickname(const QString& name, const DriveIdentity& drive);
    void record(const SpeedTestResult& result);

    // The paths of both files as the environment names them now.
    static QStringList files();
    // Keeps other programs that ask for the same waiting until it is closed; not open when there is
    // no place for the lock.
    static Descriptor lockFiles();
    // Records with a store of its own for which other programs wait, so that what they have
    // recorded meanwhile stays.
    static void recordAlone(const SpeedTestResult& result);

signals:
    void objectWillChange();
    void resultsChanged();
    void nicknamesChanged();

private:
    Descriptor lockForWriting() const;
    QList<DiagnosticsStore*> othersOfThisProcess() const;
    void keepNickname(const QString& name, const QString& driveKey);
    void keepResult(const SpeedTestResult& result);

    const Descriptor m_lock;  // open while other programs wait for this store
    QList<SpeedTestResult> m_results;
    QMap<QString, QString> m_nicknames;
    QString m_resultsPath;
    QString m_nicknamesPath;
};
