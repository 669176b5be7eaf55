// Another process that reads and writes the preferences: "KEY" prints true or false, "KEY VALUE"
// writes first.
#include <QCoreApplication>
#include <cstdio>

#include "Preferences.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    Preferences preferences;
    for (const PreferenceRow& row : preferenceTable) {
        if (arguments.value(0) == QLatin1String(row.key)) {
            if (arguments.size() > 1) {
                preferences.set(row.preference, arguments[1] == QLatin1String("true"));
            }
            std::puts(preferences.value(row.preference) ? "true" : "false");
            return 0;
        }
    }
    return 1;
}
