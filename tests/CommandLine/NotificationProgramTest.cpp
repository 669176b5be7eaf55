// What the built program's rips tell a notification daemon.
#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <csignal>

#include "CliProgram.h"
#include "NotificationServer.h"
#include "SessionBus.h"
#include "StubTools.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NotificationProgramTest : public testing::Test {
protected:
    NotificationProgramTest() {
        CliTest::writeDrive(folder);
        CliTest::writeImagingTool(folder, image);
        StubTools::write(folder, "/usr/bin/shasum", "exec sha256sum \"$3\"");
    }

    // The texts that a daemon received from one rip.
    std::vector<std::string> textsOf(const QStringList& more, int exitStatus) {
        const SessionBus bus(folder);
        const NotificationServer server(bus.address(), {});
        CliProgram program(rip(more));
        EXPECT_EQ(program.exitStatus(), exitStatus) << program.errors().toStdString();
        std::vector<std::string> texts;
        for (const QString& text : server.texts()) {
            texts.push_back(text.toStdString());
        }
        return texts;
    }

    QStringList rip(const QStringList& more = {}) const {
        return QStringList{"rip", "--json", "--output", folder.path("A & <b>\"B\".iso")} + more;
    }

    static constexpr const char* image = "printf image > \"$image\"";

    TestFolder folder;
};

TEST_F(NotificationProgramTest, AVerifiedRipIsTold) {
    EXPECT_THAT(textsOf({}, 0), ElementsAre("Rip Verified: Saved and verified: A & <b>\"B\".iso"));
}

TEST_F(NotificationProgramTest, AFailedRipIsTold) {
    CliTest::writeImagingTool(folder, "echo no medium >&2; exit 1");
    EXPECT_THAT(textsOf({}, 1),
                ElementsAre("Rip Failed: hdiutil exited with an error: no medium\n"));
}

TEST_F(NotificationProgramTest, AMismatchIsTold) {
    CliTest::writeImagingTool(folder, "echo \"$image\" > \"$image\"");
    EXPECT_THAT(textsOf({"--thorough"}, 2),
                ElementsAre("Verification Failed: The ISO does not match the disc. The disc was "
                            "not ejected — you may want to retry."));
}

TEST_F(NotificationProgramTest, AVerificationThatFailsIsTold) {
    StubTools::write(folder, "/usr/bin/shasum", "exit 1");
    EXPECT_THAT(textsOf({"--thorough"}, 1),
                ElementsAre("Verification Error: Could not compute checksum."));
}

TEST_F(NotificationProgramTest, AnEjectThatFailsIsToldAfterTheRip) {
    StubTools::write(folder, "/usr/bin/drutil",
                     "case $1 in eject) exit 1;; esac\necho 'Type: CD-ROM Name: /dev/disk4'");
    StubTools::write(folder, "/usr/sbin/diskutil", "exit 1");
    EXPECT_THAT(textsOf({"--eject"}, 0),
                ElementsAre("Rip Verified: Saved and verified: A & <b>\"B\".iso",
                            "Couldn't Eject Disc: The rip finished, but the disc couldn't be "
                            "ejected automatically. You can eject it manually."));
}

TEST_F(NotificationProgramTest, ACancelledRipTellsNothing) {
    CliTest::writeImagingTool(folder,
                              "printf partial > \"$image\"\necho PERCENT:10\nexec sleep 1000");
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    CliProgram program(rip());
    ASSERT_TRUE(program.waitForOutput("0.1"));
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.exitStatus(), 130);
    EXPECT_THAT(server.texts(), IsEmpty());
}

TEST_F(NotificationProgramTest, ABusThatNeverAnswersDoesNotHoldTheProgramUp) {
    const SilentBus bus(folder);
    QElapsedTimer timer;
    timer.start();
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.errors(), "");
    EXPECT_LT(timer.elapsed(), 20'000);
}

}  // namespace
