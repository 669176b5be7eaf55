// UDisks against a service on a bus of the test's own.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "ScratchFolder.h"
#include "UDisks.h"

namespace {

using testing::HasSubstr;
using Kind = Failure::Kind;

// A child whose standard output the test reads; ended with the test.
class Child final {
public:
    explicit Child(const std::vector<std::string>& words) {
        std::array<int, 2> ends;
        if (pipe(ends.data()) != 0) {
            return;
        }
        m_process = fork();
        if (m_process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            std::vector<char*> pointers;
            for (const std::string& word : words) {
                pointers.push_back(const_cast<char*>(word.c_str()));
            }
            pointers.push_back(nullptr);
            execvp(pointers[0], pointers.data());
            _exit(127);
        }
        close(ends[1]);
        m_output = ends[0];
    }
    ~Child() {
        if (m_process > 0) {
            kill(m_process, SIGTERM);
            waitpid(m_process, nullptr, 0);
        }
        close(m_output);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // The next line it prints, without its end; empty when it has ended.
    std::string line() const {
        std::string text;
        char character = 0;
        while (read(m_output, &character, 1) == 1 && character != '\n') {
            text += character;
        }
        return text;
    }

private:
    pid_t m_process = -1;
    int m_output = -1;
};

class UDisksBusTest : public testing::Test {
protected:
    UDisksBusTest()
        : m_bus({"dbus-daemon", "--session", "--nofork", "--print-address",
                 "--address=unix:path=" + folder.path("bus")}) {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.line().c_str(), 1);
    }
    ~UDisksBusTest() override { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    void startService(const std::string& error = "none") {
        m_service = std::make_unique<Child>(
            std::vector<std::string>{"/usr/bin/python3", FAKE_UDISKS, error, folder.path("calls")});
        ASSERT_EQ(m_service->line(), "ready");
    }
    std::string calls() const { return ScratchFolder::read(folder.path("calls")).value_or(""); }

    ScratchFolder folder;
    UDisks disks;

private:
    Child m_bus;
    std::unique_ptr<Child> m_service;
};

TEST_F(UDisksBusTest, UnmountingCallsTheServiceForTheDevice) {
    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_TRUE(disks.unmount("sr0"));
    EXPECT_EQ(calls(), "Unmount {}\n");
}

TEST_F(UDisksBusTest, EjectingCallsTheDriveOfTheDevice) {
    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_TRUE(disks.eject("sr0"));
    EXPECT_EQ(calls(), "Eject {}\n");
}

TEST_F(UDisksBusTest, TheServicesErrorIsToldWithItsText) {
    ASSERT_NO_FATAL_FAILURE(startService("org.freedesktop.UDisks2.Error.DeviceBusy"));
    EXPECT_EQ(disks.unmount("sr0").failure(), (Failure{Kind::Busy, "The service says no"}));
}

TEST_F(UDisksBusTest, ADeviceThatTheServiceDoesNotKnowIsUnavailable) {
    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_EQ(disks.unmount("sr1").failure().kind, Kind::Unavailable);
    EXPECT_EQ(disks.eject("sr1").failure().kind, Kind::Unavailable);
}

TEST_F(UDisksBusTest, ABusWithoutTheServiceIsUnavailable) {
    EXPECT_EQ(disks.unmount("sr0").failure().kind, Kind::Unavailable);
    EXPECT_EQ(disks.eject("sr0").failure().kind, Kind::Unavailable);
}

TEST_F(UDisksBusTest, AMissingBusIsUnavailable) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_EQ(disks.unmount("sr0").failure().kind, Kind::Unavailable);
    EXPECT_EQ(disks.eject("sr0").failure().kind, Kind::Unavailable);
}

}  // namespace
