// Another process that reads and writes the preferences: "KEY" prints true or false, "KEY VALUE"
// writes first.
#include <QCoreApplication>
#include <QVariant>
#include <cstdio>

#include "Preferences.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    Preferences preferences;
    const QByteArray key = arguments.value(0).toUtf8();
    if (arguments.size() > 1 &&
        !preferences.setProperty(key.constData(), arguments[1] == QLatin1String("true"))) {
        return 1;
    }
    std::puts(preferences.property(key.constData()).toBool() ? "true" : "false");
    return 0;
}
