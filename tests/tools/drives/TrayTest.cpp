#include "Tray.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "DescriptorHolder.h"
#include "DeviceLock.h"
#include "FakeMachine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = Failure::Kind;

const char* const mountedOnce = "30 28 11:0 / /media/A ro - iso9660 /dev/sr0 ro\n";
const char* const mountedTwice =
    "30 28 11:0 / /media/A ro - iso9660 /dev/sr0 ro\n"
    "31 28 11:0 / /media/B ro - iso9660 /dev/sr0 ro\n";

class TrayTest : public testing::Test {
protected:
    TrayTest() { machine.addDrive("sr0", "11:0"); }

    bool open(const std::string& node = "sr0") {
        const auto opened = Tray(machine.paths(), std::nullopt, devices, service).open(node);
        problem = opened ? "" : opened.failure().sentence;
        return static_cast<bool>(opened);
    }
    std::string holderNode() const { return machine.path("dev/sr0"); }

    FakeMachine machine;
    FakeDevices devices;
    FakeService service{machine.mountTable()};
    std::string problem;
};

TEST_F(TrayTest, ADiscThatIsNotMountedIsEjectedWithoutAskingTheService) {
    EXPECT_TRUE(open());
    EXPECT_THAT(devices.questions, ElementsAre("eject sr0"));
    EXPECT_THAT(service.calls, IsEmpty());
}

TEST_F(TrayTest, AMountedDiscIsUnmountedByTheServiceFirst) {
    machine.setMounts(mountedTwice);
    EXPECT_TRUE(open());
    EXPECT_THAT(service.calls, ElementsAre("unmount sr0", "unmount sr0"));
    EXPECT_THAT(devices.questions, ElementsAre("eject sr0"));
}

TEST_F(TrayTest, WithoutTheServiceTheDiscIsUnmountedDirectlyTheLastMountFirst) {
    machine.setMounts(mountedTwice);
    service.unmountResult = Failure{Kind::Unavailable, ""};
    EXPECT_TRUE(open());
    EXPECT_THAT(service.calls,
                ElementsAre("unmount sr0", "unmountFolder /media/B", "unmountFolder /media/A"));
}

TEST_F(TrayTest, AServiceThatSaysDoneAndDidNothingIsNotAskedForever) {
    machine.setMounts(mountedOnce);
    service.removesMounts = false;
    EXPECT_FALSE(open());
    EXPECT_THAT(service.calls, ElementsAre("unmount sr0", "unmountFolder /media/A"));
    EXPECT_EQ(problem, "/dev/sr0 is still mounted on /media/A.");
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(TrayTest, ABusyMountNamesItsHolderAndEjectsNothing) {
    machine.setMounts(mountedOnce);
    machine.addProcess(77, "bash", {{"cwd", "/media/A/folder"}});
    service.unmountResult = Failure{Kind::Busy, ""};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0 is in use by bash (process 77).");
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(TrayTest, AFailedUnmountOfADiscThatSomeoneUsesNamesTheUser) {
    machine.setMounts(mountedOnce);
    machine.addProcess(77, "bash", {{"cwd", "/media/A"}});
    service.unmountResult = Failure{Kind::System, "target is busy"};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0 is in use by bash (process 77).");
}

TEST_F(TrayTest, AFailedUnmountGivesTheServicesReason) {
    machine.setMounts(mountedOnce);
    service.unmountResult = Failure{Kind::System, "Not authorized to perform operation"};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem,
              "/dev/sr0 is mounted on /media/A and cannot be unmounted: Not authorized to perform "
              "operation");
}

TEST_F(TrayTest, AHeldDriveNamesItsHolders) {
    machine.addProcess(12, "hdiutil", {{"fd/3", holderNode()}});
    machine.addProcess(34, "vlc", {{"fd/9", holderNode()}});
    devices.ejected = Failure{Kind::Busy, ""};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0 is in use by hdiutil (process 12) and vlc (process 34).");
}

TEST_F(TrayTest, ADriveThatRefusesIsAFailure) {
    devices.ejected = Failure{Kind::Refused, ""};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0: the drive refused to open its tray.");
}

TEST_F(TrayTest, ARefusalNamesTheProgramsThatMayBeTheReason) {
    machine.addProcess(34, "vlc", {{"fd/9", holderNode()}});
    devices.ejected = Failure{Kind::Refused, ""};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem,
              "/dev/sr0: the drive refused to open its tray. /dev/sr0 is in use by vlc (process "
              "34).");
}

TEST_F(TrayTest, ADiscThatIsImagedIsNeitherUnmountedNorEjected) {
    machine.setMounts(mountedOnce);
    machine.addProcess(12, "hdiutil", {{"fd/3", holderNode()}}, 7);
    machine.addProcess(7, "spindrift-cli", {});
    const DescriptorHolder reader(::open(holderNode().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(DeviceLock::holdForReading(reader.get(), "/dev/sr0"));
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0 is busy: spindrift-cli (pid 7) reads it");
    EXPECT_THAT(service.calls, IsEmpty());
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(TrayTest, WhoMayNotOpenTheDeviceEjectsThroughTheService) {
    devices.ejected = Failure{Kind::NoAccess, "Permission denied"};
    service.ejectResult = {};
    EXPECT_TRUE(open());
    EXPECT_THAT(service.calls, ElementsAre("eject sr0"));
}

TEST_F(TrayTest, WithoutAccessAndWithoutTheServiceTheReasonIsTheMissingPermission) {
    devices.ejected = Failure{Kind::NoAccess, "Permission denied"};
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/sr0: Permission denied");
}

TEST_F(TrayTest, ADeviceThatIsNoOpticalDriveIsNeitherUnmountedNorEjected) {
    machine.addDrive("sda", "8:0");
    machine.setMounts("30 28 8:0 / /home rw - ext4 /dev/sda rw\n");
    for (const char* name : {"sda", "loop0", "sr", "srx", "sr0p1"}) {
        EXPECT_FALSE(open(name)) << name;
        EXPECT_EQ(problem, std::string("/dev/") + name + " is not an optical drive.");
    }
    EXPECT_THAT(service.calls, IsEmpty());
    EXPECT_THAT(devices.questions, IsEmpty());
}

class PracticeTrayTest : public testing::Test {
protected:
    bool open() {
        const auto opened =
            Tray(machine.paths(), folder.path(), devices, service).open("practice0");
        problem = opened ? "" : opened.failure().sentence;
        return static_cast<bool>(opened);
    }

    FakeMachine machine;
    FakeDevices devices;
    FakeService service{machine.mountTable()};
    ScratchFolder folder;
    std::string problem;
};

TEST_F(PracticeTrayTest, EjectingRenamesTheImage) {
    folder.write("disc.iso", "image");
    EXPECT_TRUE(open());
    EXPECT_THAT(folder.list(), ElementsAre("ejected.iso"));
}

TEST_F(PracticeTrayTest, EjectingASymbolicLinkLeavesItsTargetAlone) {
    const ScratchFolder elsewhere;
    const std::string image = elsewhere.write("image.iso", "image");
    ASSERT_EQ(symlink(image.c_str(), folder.path("disc.iso").c_str()), 0);
    EXPECT_TRUE(open());
    EXPECT_THAT(folder.list(), ElementsAre("ejected.iso"));
    struct stat status {};
    ASSERT_EQ(lstat(folder.path("ejected.iso").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_EQ(ScratchFolder::read(image), "image");
}

TEST_F(PracticeTrayTest, AnImageThatWasEjectedBeforeIsReplaced) {
    folder.write("ejected.iso", "old");
    folder.write("disc.iso", "new");
    EXPECT_TRUE(open());
    EXPECT_EQ(ScratchFolder::read(folder.path("ejected.iso")), "new");
}

TEST_F(PracticeTrayTest, ADiscThatIsImagedStaysInItsDrive) {
    folder.write("disc.iso", "image");
    const std::string lock = folder.write(".lock", "");
    machine.addProcess(12, "hdiutil", {{"fd/3", lock}});
    const DescriptorHolder reader(::open(lock.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(DeviceLock::holdForReading(reader.get(), "/dev/practice0"));
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "/dev/practice0 is busy: hdiutil (pid 12) reads it");
    EXPECT_THAT(folder.list(), ElementsAre(".lock", "disc.iso"));
}

TEST_F(PracticeTrayTest, AnEmptyTrayOpensToo) {
    EXPECT_TRUE(open());
    EXPECT_THAT(folder.list(), IsEmpty());
}

TEST_F(PracticeTrayTest, ADriveToldToFailKeepsItsDisc) {
    folder.write("disc.iso", "image");
    folder.write("drive.json", R"({"failEject": true})");
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "The practice drive refused to open its tray.");
    EXPECT_THAT(folder.list(), ElementsAre("disc.iso", "drive.json"));
}

TEST_F(PracticeTrayTest, WithoutADriveNothingIsEjected) {
    folder.write("disc.iso", "image");
    folder.write("drive.json", R"({"noDrive": true})");
    EXPECT_FALSE(open());
    EXPECT_EQ(problem, "No optical drive found.");
    EXPECT_THAT(folder.list(), ElementsAre("disc.iso", "drive.json"));
}

}  // namespace
