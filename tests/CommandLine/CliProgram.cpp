#include "CliProgram.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <csignal>

#include "StubTools.h"
#include "Waiting.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr int limit = 110'000;  // milliseconds; only ends a test that would hang

}  // namespace

CliProgram::CliProgram(const QStringList& arguments, Group group) {
    // The test itself may run in the background of a shell, with these ignored.
    m_process.setChildProcessModifier([group] {
        for (const int number : {SIGINT, SIGHUP, SIGTERM, SIGPIPE}) {
            ::signal(number, SIG_DFL);
        }
        if (group == Group::Own) {
            ::setpgid(0, 0);
        }
    });
    m_process.start(QStringLiteral(SPINDRIFT_CLI), arguments, QIODevice::ReadOnly);
    EXPECT_TRUE(m_process.waitForStarted(limit)) << m_process.errorString().toStdString();
}

CliProgram::~CliProgram() {
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(limit);
    }
}

int CliProgram::exitStatus() {
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(limit)) {
        ADD_FAILURE() << "The program did not end. Its output: " << output().toStdString();
        return -1;
    }
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

QByteArray CliProgram::output() {
    m_output += m_process.readAllStandardOutput();
    return m_output;
}

QByteArray CliProgram::errors() {
    return m_process.readAllStandardError();
}

bool CliProgram::waitForOutput(const QByteArray& text) {
    while (!output().contains(text)) {
        if (!m_process.waitForReadyRead(limit)) {
            return output().contains(text);
        }
    }
    return true;
}

void CliProgram::sendSignal(int number) const {
    ::kill(static_cast<pid_t>(m_process.processId()), number);
}

void CliProgram::sendSignalToGroup(int number) const {
    ::kill(-static_cast<pid_t>(m_process.processId()), number);
}

bool CliProgram::stop() const {
    sendSignal(SIGSTOP);
    return waitUntil([this] { return CliTest::stateOf(m_process.processId()) == 'T'; });
}

std::vector<Json> CliProgram::jsonLines() {
    std::vector<Json> values;
    for (const QByteArray& line : output().split('\n')) {
        if (!line.isEmpty()) {
            values.push_back(Json::parse(line.toStdString(), nullptr, false));
            EXPECT_FALSE(values.back().is_discarded()) << line.toStdString();
        }
    }
    return values;
}

std::vector<std::string> CliProgram::changes() {
    std::vector<std::string> result;
    for (const Json& line : jsonLines()) {
        const std::string property = line.value("property", std::string("?"));
        if (property == "bytesWritten" || property == "speedBytesPerSecond" ||
            property == "bytesRead") {
            continue;
        }
        if (property == "lastRipAverageBytesPerSecond") {
            EXPECT_GT(line["value"].get<double>(), 0);
            result.push_back(property);
        } else {
            result.push_back(property + "=" + line["value"].dump());
        }
    }
    return result;
}

Json CliProgram::lastValue(const std::string& property) {
    Json value;
    for (const Json& line : jsonLines()) {
        if (line["property"] == property) {
            value = line["value"];
        }
    }
    return value;
}

void CliTest::useRealTools(TestFolder& folder) {
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT", SPINDRIFT_TOOL_ROOT_DIR);
}

void CliTest::writeDrive(const TestFolder& folder) {
    StubTools::write(folder, "/usr/bin/drutil", R"(cat <<'TXT'
 Vendor   Product           Rev 
 PIONEER  BD-RW   BDR-209D  1.10

           Type: DVD-ROM              Name: /dev/disk4
TXT)");
    StubTools::write(folder, "/usr/sbin/diskutil", R"(case "$*" in
"info -plist"*) cat <<'TXT'
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>VolumeName</key><string>TEST DISC</string>
<key>TotalSize</key><integer>4096</integer>
</dict></plist>
TXT
;;
"list /dev/disk4") printf '   0: DVD disk4\n   1: data disk4s1\n' ;;
eject*) exit 0 ;;
*) exit 1 ;;
esac)");
    StubTools::write(folder, "/usr/bin/pkill", "exec /usr/bin/pkill \"$@\"");
}

void CliTest::writeImagingTool(const TestFolder& folder, const QByteArray& body) {
    StubTools::write(folder, "/usr/bin/hdiutil",
                     "for image; do :; done\n"
                     "case \"$image\" in *.cdr) ;; *) image=$image.cdr ;; esac\n" +
                         body);
}

QStringList CliTest::temporaryImages(const TestFolder& folder) {
    return TestFolder::list(folder.temporary()).filter(QStringLiteral("spindrift-"));
}

char CliTest::stateOf(qint64 identifier) {
    const QByteArray status =
        TestFolder::read(QStringLiteral("/proc/%1/stat").arg(identifier)).value_or(QByteArray());
    // "number (name) letter ...": the name may hold anything.
    return status.mid(status.lastIndexOf(')') + 1).trimmed().append('\0').front();
}

bool CliTest::isRunning(qint64 identifier) {
    return ::kill(static_cast<pid_t>(identifier), 0) == 0;
}
