// The options of the program's command line, as a plain value.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

struct LaunchOptions {
    bool help = false;
    bool version = false;
    bool practice = false;
    std::optional<QString> practiceImage;  // of --practice FILE; absent: the sample disc

    // The arguments come without the program's name. Absent when they make no sense; then *error
    // says why in a sentence.
    static std::optional<LaunchOptions> parse(const QStringList& arguments, QString* error);

    static QString helpText();
};
