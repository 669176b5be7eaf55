#include "FakeMachine.h"

#include <unistd.h>

#include <stdexcept>

namespace {

std::string lastName(const std::string& node) {
    return node.substr(node.rfind('/') + 1);
}

}  // namespace

const char* const dualLayerRecord = R"(S:disk/by-label/My\x20Disc
S:disk/by-id/usb-HL-DT-ST_DVDRAM_GP65NB60_K123-0:0
S:cdrom
I:4211845
E:ID_CDROM=1
E:ID_CDROM_CD=1
E:ID_CDROM_CD_R=1
E:ID_CDROM_DVD=1
E:ID_CDROM_DVD_PLUS_R_DL=1
E:ID_CDROM_MRW_W=1
E:ID_CDROM_MEDIA=1
E:ID_CDROM_MEDIA_DVD_PLUS_R_DL=1
E:ID_CDROM_MEDIA_STATE=complete
E:ID_CDROM_MEDIA_SESSION_COUNT=1
E:ID_CDROM_MEDIA_TRACK_COUNT=1
E:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1
E:ID_VENDOR=HL-DT-ST
E:ID_FS_UUID=2021-03-27-18-11-30-00
E:ID_FS_LABEL=My_Disc
E:ID_FS_LABEL_ENC=My\x20Disc
E:ID_FS_TYPE=udf
E:ID_FS_USAGE=filesystem
G:systemd
G:uaccess
Q:systemd
Q:uaccess
V:1
)";

Result<MediumFacts> FakeDevices::medium(const std::string& node) {
    questions.push_back("medium " + lastName(node));
    if (!mediumError.empty()) {
        return Failure{Failure::Kind::System, mediumError};
    }
    return media[lastName(node)];
}

std::string FakeDevices::label(const std::string& node) {
    questions.push_back("label " + lastName(node));
    return labels[lastName(node)];
}

Result<void> FakeDevices::eject(const std::string& node) {
    questions.push_back("eject " + lastName(node));
    return ejected;
}

Result<void> FakeService::unmount(const std::string& device) {
    calls.push_back("unmount " + device);
    if (unmountResult) {
        dropLastMount();
    }
    return unmountResult;
}

Result<void> FakeService::eject(const std::string& device) {
    calls.push_back("eject " + device);
    return ejectResult;
}

Result<void> FakeService::unmountFolder(const std::string& folder) {
    calls.push_back("unmountFolder " + folder);
    if (unmountFolderResult) {
        dropLastMount();
    }
    return unmountFolderResult;
}

void FakeService::dropLastMount() {
    if (!removesMounts) {
        return;
    }
    const std::string table = ScratchFolder::read(m_mountTable).value_or("");
    const std::size_t lineStart = table.rfind('\n', table.size() - 2);
    if (truncate(m_mountTable.c_str(),
                 lineStart == std::string::npos ? 0 : static_cast<off_t>(lineStart + 1)) != 0) {
        throw std::runtime_error("cannot shorten " + m_mountTable);
    }
}

FakeMachine::FakeMachine() {
    setMounts("");
    m_folder.write("sys/.keep", "");
    m_folder.write("udev/.keep", "");
}

SystemPaths FakeMachine::paths() const {
    return {m_folder.path("sys"), m_folder.path("udev"), m_folder.path("dev"),
            m_folder.path("proc")};
}

void FakeMachine::addDrive(const std::string& name, const std::string& number,
                           std::uint64_t bytes) {
    setAttribute(name, "dev", number + "\n");
    setAttribute(name, "size", std::to_string(bytes / 512) + "\n");
    setAttribute(name, "device/vendor", "HL-DT-ST\n");
    setAttribute(name, "device/model", "DVDRAM GP65NB60 \n");
    setAttribute(name, "device/rev", "RF00\n");
    m_folder.write("dev/" + name, "");
}

void FakeMachine::setAttribute(const std::string& name, const std::string& file,
                               const std::string& text) {
    m_folder.write("sys/" + name + "/" + file, text);
}

void FakeMachine::removeNode(const std::string& name) {
    unlink(path("dev/" + name).c_str());
}

void FakeMachine::setRecord(const std::string& number, const std::string& record) {
    m_folder.write("udev/b" + number, record);
}

void FakeMachine::setMounts(const std::string& mountinfo) {
    m_folder.write("proc/self/mountinfo", mountinfo);
}

void FakeMachine::addProcess(int number, const std::string& program,
                             const std::map<std::string, std::string>& links, int parent) {
    const std::string folder = "proc/" + std::to_string(number) + "/";
    m_folder.write(folder + "status",
                   "Name:\t" + program + "\nPPid:\t" + std::to_string(parent) + "\n");
    m_folder.write(folder + "comm", program + "\n");
    m_folder.write(folder + "fd/.keep", "");
    for (const auto& [name, target] : links) {
        if (symlink(target.c_str(), path(folder + name).c_str()) != 0) {
            throw std::runtime_error("cannot link " + name);
        }
    }
}
