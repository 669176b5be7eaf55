#include "LaunchOptions.h"

#include <QCoreApplication>

std::optional<LaunchOptions> LaunchOptions::parse(const QStringList& arguments, QString* error) {
    constexpr QLatin1String practiceEquals("--practice=");
    LaunchOptions options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            options.help = true;
        } else if (argument == QLatin1String("--version") || argument == QLatin1String("-V")) {
            options.version = true;
        } else if (argument == QLatin1String("--practice")) {
            options.practice = true;
            if (i + 1 < arguments.size() && !arguments.at(i + 1).startsWith(QLatin1Char('-'))) {
                options.practiceImage = arguments.at(++i);
            }
        } else if (argument.startsWith(practiceEquals) && argument.size() > practiceEquals.size()) {
            options.practice = true;
            options.practiceImage = argument.mid(practiceEquals.size());
        } else {
            *error =
                QCoreApplication::translate("LaunchOptions", "Unknown argument \"%1\". Try --help.")
                    .arg(argument);
            return std::nullopt;
        }
    }
    return options;
}

QString LaunchOptions::helpText() {
    return QCoreApplication::translate(
        "LaunchOptions",
        "Usage: spindrift [--practice [FILE.iso]]\n"
        "Makes raw ISO images of optical discs.\n"
        "\n"
        "  --practice [FILE.iso]  use a practice drive instead of the computer's drive, with FILE\n"
        "                         (or a sample disc) in its tray\n"
        "  -h, --help             print this and exit\n"
        "  -V, --version          print the version and exit\n"
        "\n"
        "spindrift-cli does the same in a terminal.\n");
}
