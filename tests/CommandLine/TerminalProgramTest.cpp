// The built program on a terminal.
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <array>
#include <csignal>

#include "CliProgram.h"
#include "StubTools.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int columns = 50;

class TerminalProgramTest : public testing::Test {
protected:
    TerminalProgramTest() {
        CliTest::writeDrive(folder);
        folder.setEnvironment("TERM", "xterm");
    }

    ~TerminalProgramTest() override {
        if (m_terminal >= 0) {
            ::close(m_terminal);
        }
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
    }

    void start(const QByteArray& more = QByteArray()) {
        const QByteArray target = folder.path(QStringLiteral("out.iso")).toUtf8();
        const winsize size{24, columns, 0, 0};
        m_pid = ::forkpty(&m_terminal, nullptr, nullptr, &size);
        ASSERT_GE(m_pid, 0);
        if (m_pid == 0) {
            ::signal(SIGINT, SIG_DFL);
            ::execl(SPINDRIFT_CLI, SPINDRIFT_CLI, "rip", "--output", target.constData(),
                    more.isEmpty() ? nullptr : more.constData(), nullptr);
            ::_exit(127);
        }
    }

    // Reads on until this text has come, or to the end of the output.
    bool readUntil(const QByteArray& text) {
        std::array<char, 4096> bytes{};
        while (!screen.contains(text)) {
            const ssize_t count = ::read(m_terminal, bytes.data(), bytes.size());
            if (count <= 0) {
                return false;
            }
            screen.append(bytes.data(), count);
        }
        return true;
    }

    int exitStatus() {
        readUntil("(text that never comes)");
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    void type(const char* key) const { ASSERT_EQ(::write(m_terminal, key, 1), 1); }

    TestFolder folder;
    QByteArray screen;

private:
    int m_terminal = -1;
    pid_t m_pid = -1;
};

TEST_F(TerminalProgramTest, TheProgressLineIsDrawnOverAndRemovedAtTheEnd) {
    CliTest::writeImagingTool(folder,
                              "printf 0123456789 > \"$image\"\necho PERCENT:50\n"
                              "while [ ! -e '" +
                                  folder.path("go on").toUtf8() + "' ]; do sleep 0.02; done");
    start();
    ASSERT_TRUE(readUntil("50 %"));
    folder.write("go on", "");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_THAT(screen.toStdString(), HasSubstr("\r[====="));
    EXPECT_THAT(screen.toStdString(), HasSubstr("\r\x1b[KSaved: "));
}

TEST_F(TerminalProgramTest, NoProgressLineIsAsWideAsTheTerminal) {
    CliTest::writeImagingTool(folder,
                              "printf 0123456789 > \"$image\"\necho PERCENT:50\n"
                              "while [ ! -e '" +
                                  folder.path("go on").toUtf8() + "' ]; do sleep 0.02; done");
    start();
    ASSERT_TRUE(readUntil("50 %"));
    folder.write("go on", "");
    EXPECT_EQ(exitStatus(), 0);
    for (const QByteArray& piece : screen.split('\r')) {
        if (piece.startsWith('[')) {
            EXPECT_LT(QString::fromUtf8(piece).remove(QStringLiteral("\x1b[K")).size(), columns);
        }
    }
}

TEST_F(TerminalProgramTest, CtrlCCancelsThoughTheToolsGetItToo) {
    CliTest::writeImagingTool(folder,
                              "printf partial > \"$image\"\necho PERCENT:10\nexec sleep 1000");
    start();
    ASSERT_TRUE(readUntil("10 %"));
    type("\x03");
    EXPECT_EQ(exitStatus(), 130);
    EXPECT_THAT(screen.toStdString(), EndsWith("spindrift-cli: Cancelled.\r\n"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    EXPECT_FALSE(QFile::exists(folder.path("out.iso")));
}

TEST_F(TerminalProgramTest, ADumbTerminalGetsPlainLines) {
    folder.setEnvironment("TERM", "dumb");
    CliTest::writeImagingTool(folder, "printf 0123456789 > \"$image\"");
    start();
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_THAT(screen.toStdString(), Not(HasSubstr("\x1b")));
}

TEST_F(TerminalProgramTest, ControlCharactersOfATextAreShownAndNotObeyed) {
    CliTest::writeImagingTool(folder,
                              "printf 'a\\033[2J\\033]0;title\\007b\\302\\2332J\\n' >&2\nexit 1");
    start();
    EXPECT_EQ(exitStatus(), 1);
    EXPECT_THAT(screen.toStdString(), HasSubstr("a\uFFFD[2J\uFFFD]0;title\uFFFDb\uFFFD2J\r\n"));
    EXPECT_THAT(screen.toStdString(), Not(HasSubstr("\x1b[2J")));
}

TEST_F(TerminalProgramTest, JsonIsTheSameOnATerminal) {
    CliTest::writeImagingTool(folder, "printf 0123456789 > \"$image\"");
    start("--json");
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_THAT(screen.toStdString(), Not(HasSubstr("\x1b")));
    EXPECT_THAT(screen.toStdString(), EndsWith("\"value\":\"matched\"}\r\n"));
}

}  // namespace
