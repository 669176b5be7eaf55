#include "DriveStubs.h"

#include "StubTools.h"

namespace DriveStubs {

namespace {

const QString drutil = QStringLiteral("/usr/bin/drutil");
const QString diskutil = QStringLiteral("/usr/sbin/diskutil");
const QString hdiutil = QStringLiteral("/usr/bin/hdiutil");
const QString shasum = QStringLiteral("/usr/bin/shasum");

constexpr const char* driveTable =
    " Vendor   Product           Rev \n"
    " ACME     Test Drive        1.0 \n"
    "\n";

QByteArray propertyList(const QByteArray& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
           "</dict></plist>\n";
}

QByteArray print(const QByteArray& text) {
    return "cat <<'END'\n" + text + "END\n";
}

}  // namespace

void noDrive(const TestFolder& folder) {
    StubTools::write(folder, drutil, "exit 1");
}

void emptyDrive(const TestFolder& folder) {
    StubTools::write(folder, drutil, print(QByteArray(driveTable) + " Type: No Media Inserted\n"));
}

void disc(const TestFolder& folder, const Disc& disc) {
    QByteArray info;
    if (!disc.volumeName.isEmpty()) {
        info += "<key>VolumeName</key><string>" + disc.volumeName + "</string>";
    }
    if (!disc.size.isEmpty()) {
        info += "<key>TotalSize</key><integer>" + disc.size + "</integer>";
    }
    StubTools::write(folder, diskutil,
                     "case \"$1 $2\" in\n'info -plist')\n" + print(propertyList(info)) +
                         ";;\n'list -plist')\n" + print(propertyList(QByteArray())) +
                         ";;\neject*) exit 0;;\nesac");
    StubTools::write(folder, drutil,
                     print(QByteArray(driveTable) + " Type: " + disc.type +
                           "              Name: /dev/" + disc.device + "\n"));
}

void imaging(const TestFolder& folder, const QByteArray& body) {
    StubTools::write(folder, hdiutil,
                     "verify=yes\n"
                     "for word in \"$@\"; do\n"
                     "  [ \"$word\" = -puppetstrings ] && verify=no\n"
                     "  out=$word\n"
                     "done\n"
                     "case $out in *.cdr) ;; *) out=$out.cdr ;; esac\n" +
                         body);
}

void goodImaging(const TestFolder& folder) {
    imaging(folder, "echo PERCENT:50\nprintf image > \"$out\"\necho PERCENT:100");
}

void heldImaging(const TestFolder& folder, const QByteArray& lines, qint64 bytes) {
    const QByteArray status = "'" + folder.path(QStringLiteral("release")).toUtf8() + "'";
    imaging(folder, "truncate -s " + QByteArray::number(bytes) + " \"$out\"\n" + print(lines) +
                        "while [ ! -s " + status + " ]; do sleep 0.02; done\nexit $(cat " + status +
                        ")");
}

void release(const TestFolder& folder, int status) {
    folder.write(QStringLiteral("release"), QByteArray::number(status));
}

void goodDigest(const TestFolder& folder) {
    StubTools::write(folder, shasum, "exec /usr/bin/cksum \"$3\"");
}

}  // namespace DriveStubs
