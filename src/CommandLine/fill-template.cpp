// fill-template TEMPLATE OUTPUT: part of the build, not installed.
#include <QFile>

#include "FilledTemplate.h"

int main(int argc, char** argv) {
    QFile input(QFile::decodeName(argc == 3 ? argv[1] : ""));
    QFile output(QFile::decodeName(argc == 3 ? argv[2] : ""));
    if (!input.open(QIODevice::ReadOnly) || !output.open(QIODevice::WriteOnly)) {
        return 1;
    }
    output.write(filledTemplate(QString::fromUtf8(input.readAll())).toUtf8());
    return output.flush() ? 0 : 1;
}
