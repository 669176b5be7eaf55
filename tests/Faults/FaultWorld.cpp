#include "FaultWorld.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/futex.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <nlohmann/json.hpp>

#include "CliProgram.h"
#include "Waiting.h"

namespace {

// Bytes that are nowhere the same for long.
QByteArray bytesOfADisc(qsizetype size, quint32 seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

FaultState* mapState(const QString& path) {
    const int file =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ::ftruncate(file, sizeof(FaultState)) != 0) {
        qFatal("no state for the faults");
    }
    void* const address =
        ::mmap(nullptr, sizeof(FaultState), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (address == MAP_FAILED) {
        qFatal("no state for the faults");
    }
    return new (address) FaultState{};
}

std::string jsonText(const QByteArray& text) {
    if (text.isEmpty()) {
        return "empty";
    }
    const auto json = nlohmann::ordered_json::parse(text.toStdString(), nullptr, false);
    if (json.is_discarded()) {
        return "broken";
    }
    return json.is_array() ? std::to_string(json.size()) : json.dump();
}

}  // namespace

FaultWorld::FaultWorld(qsizetype discBytes)
    : m_other(folder),
      m_disc(bytesOfADisc(discBytes, 1)),
      m_state(mapState(folder.path(QStringLiteral("state")))) {
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT", SPINDRIFT_TOOL_ROOT_DIR);
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", QFile::encodeName(drive()));
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    folder.setEnvironment("FAULT_STATE", QFile::encodeName(folder.path(QStringLiteral("state"))));
    writeDrive();
    putIn(m_disc);
    QDir().mkpath(same());
}

FaultWorld::~FaultWorld() {
    ::munmap(m_state, sizeof(FaultState));
}

void FaultWorld::writeDrive(const QByteArray& moreKeys) const {
    folder.write(
        QStringLiteral("drive/drive.json"),
        R"({"volumeName": "DISC", "vendor": "MAKER", "product": "Drive", "revision": "1")" +
            moreKeys + "}");
}

// A new file each time: a link or a renamed one would be the disc that is being read.
void FaultWorld::putIn(const QByteArray& disc) const {
    const QString path = drive() + QStringLiteral("/disc.iso");
    folder.write(QStringLiteral("drive/disc.new"), disc);
    QFile::remove(path);
    QFile::rename(drive() + QStringLiteral("/disc.new"), path);
}

void FaultWorld::writeOld(const QString& target) const {
    QFile file(target);
    if (!file.open(QIODevice::WriteOnly) || file.write("old") != 3) {
        qFatal("no old file");
    }
}

void FaultWorld::writeStores(const std::string& store) const {
    const QString data = QStringLiteral("data/Spindrift/");
    const QByteArray other = R"({"A|B|C": "Other")";
    if (store == "History") {
        folder.write(data + QStringLiteral("speedlog.json"),
                     R"([{"id": "12345678-ABCD-ABCD-ABCD-123456789ABC", "source": "Rip",
                          "date": "2025-01-31T18:04:59Z", "driveKey": "A|B|C",
                          "driveModelString": "A B", "discKind": "CD", "discSizeBytes": 4096,
                          "averageBytesPerSecond": 1.5}])");
    } else if (store == "Nickname") {
        folder.write(data + QStringLiteral("drivenicknames.json"), other + "}");
    } else if (store == "NicknameRemoval") {
        folder.write(data + QStringLiteral("drivenicknames.json"),
                     other + R"(, "MAKER|Drive|1": "Box"})");
    } else if (store == "Preferences" || store == "NewPreferences") {
        folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                     "[General]\nthoroughVerify=true\n");
    }
}

QStringList FaultWorld::arguments(const QString& words) const {
    QStringList all = words.split(QLatin1Char(' '));
    all.replaceInStrings(QStringLiteral("SAME"), same() + QStringLiteral("/disc.iso"));
    if (hasOther()) {
        all.replaceInStrings(QStringLiteral("OTHER"), other() + QStringLiteral("/disc.iso"));
    }
    return all;
}

FaultWorld::Ending FaultWorld::run(const QString& words, const std::string& rule,
                                   const Meanwhile& meanwhile) {
    m_state->calls = 0;
    m_state->faults = 0;
    m_state->released = 0;
    QByteArray named = QByteArray::fromStdString(rule);
    if (hasOther()) {
        named.replace("OTHER", QFile::encodeName(other()));
    }
    folder.setEnvironment("FAULT_RULE", named);
    folder.setEnvironment("LD_PRELOAD", QByteArray(SPINDRIFT_FAULT_LIBRARY));
    CliProgram program(arguments(words), CliProgram::Group::Own);
    folder.setEnvironment("LD_PRELOAD", std::nullopt);
    if (meanwhile) {
        EXPECT_TRUE(waitUntil([this] { return m_state->faults > 0; })) << "no call to pause at";
        meanwhile(program);
        m_state->released = 1;
        ::syscall(SYS_futex, &m_state->released, FUTEX_WAKE, 1000, nullptr, nullptr, 0);
    }
    Ending ending;
    ending.status = program.exitStatus();
    ending.says = shortened(program.errors().replace("spindrift-cli: ", "").trimmed());
    ending.calls = m_state->calls;
    ending.faults = m_state->faults;
    waitForTheLastProcess();
    return ending;
}

// Ours are all that have this world's folder in their environment.
void FaultWorld::waitForTheLastProcess() const {
    const QByteArray mark = "FAULT_STATE=" + QFile::encodeName(folder.path());
    QString found;
    const bool ended = waitUntil([&] {
        found.clear();
        for (const QString& process :
             QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
            const QString place = QStringLiteral("/proc/") + process;
            if (process.toLongLong() != ::getpid() &&
                TestFolder::read(place + QStringLiteral("/environ"))
                    .value_or(QByteArray())
                    .contains(mark)) {
                found = QFile::symLinkTarget(place + QStringLiteral("/exe"));
            }
        }
        return found.isEmpty();
    });
    EXPECT_TRUE(ended) << "still there: " << found.toStdString();
    const int lock = ::open(QFile::encodeName(drive() + QStringLiteral("/.lock")).constData(),
                            O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
    // A process that ends loses its environment before its files.
    EXPECT_TRUE(waitUntil([lock] { return ::flock(lock, LOCK_EX | LOCK_NB) == 0; }))
        << "the drive is locked";
    ::close(lock);
}

std::string FaultWorld::shortened(QByteArray text) const {
    if (hasOther()) {
        text.replace(QFile::encodeName(other()), "other");
    }
    text.replace(QFile::encodeName(folder.path(QString()) + QLatin1Char('/')), "");
    static const QRegularExpression identifier(
        QStringLiteral("spindrift-(.*?)[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"));
    static const QRegularExpression newPreferences(
        QStringLiteral("Spindrift\\.conf\\.[A-Za-z0-9]{6}$"));
    return QString::fromUtf8(text)
        .replace(identifier, QStringLiteral("\\1ID"))
        .replace(newPreferences, QStringLiteral("Spindrift.conf.NEW"))
        .toStdString();
}

std::string FaultWorld::contentOf(const QString& path) const {
    const QByteArray content = TestFolder::read(path).value_or("?");
    if (path.endsWith(QLatin1String("lock"))) {
        return content.isEmpty() ? "" : "=?";
    }
    if (path.endsWith(QLatin1String(".json"))) {
        return "=" + jsonText(content);
    }
    if (path.contains(QLatin1String("Spindrift.conf")) && !content.isEmpty()) {
        return "=" + content.trimmed().replace('\n', ',').toStdString();
    }
    if (content == m_disc) {
        return "=disc";
    }
    if (content == "old") {
        return "=old";
    }
    return content.isEmpty() ? "=empty" : m_disc.startsWith(content) ? "=part" : "=WRONG";
}

std::string FaultWorld::left() const {
    QStringList files;
    const auto add = [&](const QString& place, const QString& name) {
        QDirIterator all(place, QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString path = all.next();
            files += name +
                     QString::fromStdString(shortened(QFile::encodeName(path.mid(place.size())))) +
                     QString::fromStdString(contentOf(path));
        }
    };
    add(same(), QStringLiteral("same"));
    if (hasOther()) {
        add(other(), QStringLiteral("other"));
    }
    add(folder.path(QStringLiteral("tmp")), QStringLiteral("tmp"));
    add(folder.path(QStringLiteral("data/Spindrift")), QStringLiteral("data"));
    add(folder.path(QStringLiteral("data/Trash/files")), QStringLiteral("trash"));
    add(folder.path(QStringLiteral("config/Spindrift")), QStringLiteral("config"));
    files.sort();
    return files.join(QLatin1Char(' ')).toStdString();
}

std::string FaultWorld::nextRip(const QString& target) {
    writeDrive();
    putIn(m_disc);
    QDir().mkpath(same());
    if (hasOther()) {
        QDir().mkpath(other());
    }
    const QString temporary = folder.path(QStringLiteral("tmp"));
    QDir().mkpath(temporary);
    const QStringList before = TestFolder::list(temporary);
    const Ending ending = run(QStringLiteral("rip --force -o ") + target);
    const QString path = (target == QLatin1String("SAME") ? same() : other()) + "/disc.iso";
    if (ending.status != 0) {
        return "it fails: " + ending.says;
    }
    if (TestFolder::read(path) != m_disc) {
        return "its image is wrong";
    }
    return TestFolder::list(temporary) == before ? "" : "it leaves a temporary file";
}
