// Stub disc tools that play a drive in whatever state a window test needs.
#pragma once

#include <QByteArray>
#include <QString>

#include "TestFolder.h"

namespace DriveStubs {

void noDrive(const TestFolder& folder);
void emptyDrive(const TestFolder& folder);

struct Disc {
    QByteArray type = "DVD-ROM";
    QByteArray device = "disk4";
    QByteArray volumeName = "HOLIDAY";  // empty: the disc has no name
    QByteArray size = "4700000000";     // empty: the size is unknown
};
void disc(const TestFolder& folder, const Disc& disc);

// What the imaging tool does; $out is the file to write, $verify is "yes" in the second pass.
void imaging(const TestFolder& folder, const QByteArray& body);
// Writes a small image and succeeds.
void goodImaging(const TestFolder& folder);
// Prints these lines, writes this many bytes and then goes on until release() or until it is
// killed; then it ends with the status of release().
void heldImaging(const TestFolder& folder, const QByteArray& lines, qint64 bytes);
void release(const TestFolder& folder, int status = 3);

// A digest that depends on the file's content.
void goodDigest(const TestFolder& folder);

}  // namespace DriveStubs
