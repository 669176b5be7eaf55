#include "DiagnosticsStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <utility>

#include "JsonReader.h"
#include "Published.h"
#include "StrictUtf8.h"
#include "UserFolders.h"
#include "WriteAll.h"

namespace {

// Who holds the files for longer has been stopped; the entry counts for more than the order then.
constexpr std::chrono::seconds longestLockWait{10};
constexpr unsigned long lockRetryMilliseconds = 10;

// In place, so that a link or a file with its own permissions stays what it is. On a full disk, as
// an image may leave behind, the old document stays whole.
void writeOver(const QString& path, const QByteArray& content) {
    constexpr mode_t forEveryone = 0666;  // less what the user's mask takes away
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, forEveryone));
    if (!file.isOpen()) {
        return;
    }
    if (::fallocate(file.number(), FALLOC_FL_KEEP_SIZE, 0, content.size()) != 0 &&
        (errno == ENOSPC || errno == EDQUOT)) {
        return;
    }
    if (writeAll(file.number(), content)) {
        [[maybe_unused]] const int ignored = ::ftruncate(file.number(), content.size());
    }
}

QString trimmed(const QString& name) {
    const auto isBlank = [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    };
    QStringView rest(name);
    while (!rest.isEmpty() && isBlank(rest.front())) {
        rest = rest.mid(1);
    }
    while (!rest.isEmpty() && isBlank(rest.back())) {
        rest.chop(1);
    }
    return rest.toString();
}

QByteArray encodeNicknames(const QMap<QString, QString>& nicknames) {
    nlohmann::json json = nlohmann::json::object();
    for (auto it = nicknames.cbegin(); it != nicknames.cend(); ++it) {
        json[it.key().toUtf8().toStdString()] = it.value().toUtf8().toStdString();
    }
    return QByteArray::fromStdString(json.dump(2));
}

// One object of texts.
class NicknameReader final : public JsonReader {
public:
    const QMap<QString, QString>& nicknames() const { return m_nicknames; }

private:
    bool start_object(std::size_t) override { return !std::exchange(m_isInside, true); }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return false; }
    bool end_array() override { return false; }
    bool key(string_t& name) override {
        m_key = wholeText(name);
        return true;
    }
    bool scalar(nlohmann::json value) override {
        if (!m_isInside || !value.is_string()) {
            return false;
        }
        m_nicknames.insert(m_key, wholeText(value.get_ref<const std::string&>()));
        return true;
    }

    QMap<QString, QString> m_nicknames;
    QString m_key;
    bool m_isInside = false;
};

// Where everybody may make folders: false for one that is somebody else's.
bool makeOurs(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    ::mkdir(path.constData(), S_IRWXU);
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && ::chmod(path.constData(), S_IRWXU) == 0;
}

// Every store of this process, on the main thread.
QList<DiagnosticsStore*>& openStores() {
    static QList<DiagnosticsStore*> stores;
    return stores;
}

}  // namespace

QString DiagnosticsStore::applicationFolder(const std::optional<QString>& dataFolder) {
    const QString parent = QDir::cleanPath(dataFolder.value_or(UserFolders::temporary()));
    QString folder = parent + QStringLiteral("/Spindrift");
    if (dataFolder) {
        QDir().mkpath(folder);
    } else if (QDir().mkpath(parent) && !makeOurs(folder)) {
        folder = QStringLiteral("/dev/null");  // no file can be in it
    }
    return folder;
}

QStringList DiagnosticsStore::files() {
    const QString folder = applicationFolder(UserFolders::data());
    return {folder + QStringLiteral("/speedlog.json"),
            folder + QStringLiteral("/drivenicknames.json")};
}

DiagnosticsStore::DiagnosticsStore(QObject* parent, OtherPrograms others)
    : QObject(parent),
      m_lock(others == OtherPrograms::Wait ? lockFiles() : Descriptor()),
      m_resultsPath(files().constFirst()),
      m_nicknamesPath(files().constLast()) {
    if (QFile history(m_resultsPath); history.open(QIODevice::ReadOnly)) {
        m_results = decodeHistory(history).value_or(QList<SpeedTestResult>());
    }
    NicknameReader reader;
    if (QFile file(m_nicknamesPath); file.open(QIODevice::ReadOnly) && reader.read(file)) {
        m_nicknames = reader.nicknames();
    }
    openStores().append(this);
}

DiagnosticsStore::~DiagnosticsStore() {
    openStores().removeOne(this);
}

std::optional<QString> DiagnosticsStore::nickname(const DriveIdentity& drive) const {
    const auto entry = m_nicknames.constFind(drive.driveKey());
    return entry == m_nicknames.cend() ? std::nullopt : std::optional(entry.value());
}

void DiagnosticsStore::setNickname(const QString& name, const DriveIdentity& drive) {
    const QString kept = trimmed(name);
    const Descriptor lock = lockForWriting();
    keepNickname(kept, drive.driveKey());
    writeOver(m_nicknamesPath, encodeNicknames(m_nicknames));
    for (auto* store : othersOfThisProcess()) {
        store->keepNickname(kept, drive.driveKey());
    }
}

void DiagnosticsStore::record(const SpeedTestResult& result) {
    keepResult(result);
    const Descriptor lock = lockForWriting();
    if (const auto document = encodeHistory(m_results)) {
        writeOver(m_resultsPath, *document);
    }
    for (auto* store : othersOfThisProcess()) {
        store->keepResult(result);
    }
}

Descriptor DiagnosticsStore::lockFiles() {
    const QString path = applicationFolder(UserFolders::data()) + QStringLiteral("/.lock");
    Descriptor lock(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC,
                           S_IRUSR | S_IWUSR));
    const QDeadlineTimer deadline(longestLockWait);
    while (lock.isOpen() && ::flock(lock.number(), LOCK_EX | LOCK_NB) != 0 &&
           (errno == EWOULDBLOCK || errno == EINTR) && !deadline.hasExpired()) {
        QThread::msleep(lockRetryMilliseconds);
    }
    return lock;
}

void DiagnosticsStore::recordAlone(const SpeedTestResult& result) {
    DiagnosticsStore(nullptr, OtherPrograms::Wait).record(result);
}

// Nobody shall read half of what is written.
Descriptor DiagnosticsStore::lockForWriting() const {
    return m_lock.isOpen() ? Descriptor() : lockFiles();
}

QList<DiagnosticsStore*> DiagnosticsStore::othersOfThisProcess() const {
    QList<DiagnosticsStore*> others;
    std::ranges::copy_if(openStores(), std::back_inserter(others), [this](const auto* store) {
        return store != this && store->m_resultsPath == m_resultsPath;
    });
    return others;
}

void DiagnosticsStore::keepNickname(const QString& name, const QString& driveKey) {
    auto nicknames = m_nicknames;
    if (name.isEmpty()) {
        nicknames.remove(driveKey);
    } else {
        nicknames.insert(driveKey, name);
    }
    publish(this, m_nicknames, std::move(nicknames), &DiagnosticsStore::nicknamesChanged);
}

void DiagnosticsStore::keepResult(const SpeedTestResult& result) {
    auto results = m_results;
    results.prepend(result);
    publish(this, m_results, std::move(results), &DiagnosticsStore::resultsChanged);
}

#include "moc_DiagnosticsStore.cpp"
