#include "CommandArguments.h"

#include <QFile>
#include <algorithm>
#include <utility>

#include "CommandTable.h"
#include "Suggestion.h"

namespace {

bool looksLikeOption(const QString& argument) {
    return argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
}

// Reads the arguments from left to right; the first thing that is wrong ends it.
class Parser final {
public:
    explicit Parser(QStringList arguments) : m_arguments(std::move(arguments)) {}

    CommandArguments parse() {
        while (m_next < m_arguments.size() && !m_problem) {
            const QString argument = m_arguments.at(m_next++);
            if (!m_optionsEnded && looksLikeOption(argument)) {
                readOption(argument);
            } else {
                readOperand(argument);
            }
        }
        if (m_help) {
            return HelpRequest{m_command};
        }
        if (m_version) {
            return VersionRequest{};
        }
        if (!m_problem) {
            check();
        }
        if (m_problem) {
            return UsageError{*m_problem, m_command};
        }
        return m_invocation;
    }

private:
    void readOperand(const QString& argument) {
        if (m_command) {
            m_invocation.operands.append(argument);
            return;
        }
        if (const CommandRow* row = CommandTable::named(argument)) {
            m_invocation.command = row->command;
            m_command = row->command;
            return;
        }
        QStringList names;
        for (const CommandRow& row : CommandTable::commands()) {
            names.append(QLatin1String(row.name));
        }
        m_problem =
            QStringLiteral("There is no command “%1”.").arg(argument) + suggestion(argument, names);
    }

    void readOption(const QString& argument) {
        if (argument == QLatin1String("--")) {
            m_optionsEnded = true;
        } else if (argument.startsWith(QLatin1String("--"))) {
            readLongOption(argument);
        } else {
            readLetters(argument);
        }
    }

    // "--output=FILE", also by a beginning that no other option has.
    void readLongOption(const QString& argument) {
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        const QString name = equals < 0 ? argument : argument.left(equals);
        const QList<const OptionRow*> begun = optionsBeginning(name.mid(2));
        if (begun.size() != 1) {
            complainAboutOption(name);
            return;
        }
        const OptionRow& option = *begun.constFirst();
        const QString fullName = QLatin1String("--") + QLatin1String(option.name);
        if (equals >= 0 && option.argument == nullptr) {
            m_problem = QStringLiteral("The option “%1” takes no value.").arg(fullName);
            return;
        }
        take(option, fullName, equals < 0 ? std::nullopt : std::optional(argument.mid(equals + 1)));
    }

    // "-hV" is "-h -V", "-oFILE" is "-o FILE".
    void readLetters(const QString& argument) {
        for (qsizetype index = 1; index < argument.size() && !m_problem; ++index) {
            const QString name = QLatin1Char('-') + argument.at(index);
            const OptionRow* option = optionOfLetter(argument.at(index));
            if (option == nullptr) {
                complainAboutOption(name);
            } else if (option->argument != nullptr && index + 1 < argument.size()) {
                take(*option, name, argument.mid(index + 1));
                return;
            } else {
                take(*option, name, std::nullopt);
            }
        }
    }

    static QList<const OptionRow*> allOptions() {
        QList<const OptionRow*> all;
        const auto add = [&all](const OptionRow& row) { all.append(&row); };
        std::ranges::for_each(CommandTable::commonOptions(), add);
        for (const CommandRow& command : CommandTable::commands()) {
            std::ranges::for_each(command.options, add);
        }
        return all;
    }

    static QList<const OptionRow*> optionsBeginning(const QString& name) {
        QList<const OptionRow*> begun;
        for (const OptionRow* option : allOptions()) {
            const auto full = QLatin1String(option->name);
            if (full == name) {
                return {option};
            }
            if (full.startsWith(name)) {
                begun.append(option);
            }
        }
        return begun;
    }

    static const OptionRow* optionOfLetter(QChar letter) {
        for (const OptionRow* option : allOptions()) {
            if (option->letter != 0 && letter == QLatin1Char(option->letter)) {
                return option;
            }
        }
        return nullptr;
    }

    void complainAboutOption(const QString& name) {
        QStringList names;
        for (const OptionRow* option : allOptions()) {
            names.append(QLatin1String("--") + QLatin1String(option->name));
        }
        m_problem = QStringLiteral("There is no option “%1”.").arg(name) + suggestion(name, names);
    }

    void take(const OptionRow& row, const QString& name, const std::optional<QString>& value) {
        m_taken.append({&row, name});
        switch (row.option) {
            case Option::Output:
                return readOutput(name, value);
            case Option::Practice:
                return readPractice(value);
            case Option::Thorough:
                m_invocation.thorough = true;
                return;
            case Option::Eject:
                m_invocation.eject = true;
                return;
            case Option::Force:
                m_invocation.force = true;
                return;
            case Option::Remove:
                m_invocation.remove = true;
                return;
            case Option::Json:
                m_invocation.json = true;
                return;
            case Option::Help:
                m_help = true;
                return;
            case Option::Version:
                m_version = true;
                return;
        }
    }

    void readPractice(const std::optional<QString>& value) {
        m_invocation.practice = true;
        if (value) {
            if (value->isEmpty()) {
                m_problem = QStringLiteral("The option “--practice=” names no file.");
                return;
            }
            m_invocation.practiceImage = value;
            return;
        }
        if (m_next >= m_arguments.size()) {
            return;
        }
        const QString& following = m_arguments.at(m_next);
        if (following.isEmpty() || following.startsWith(QLatin1Char('-')) ||
            CommandTable::named(following) != nullptr) {
            return;
        }
        m_invocation.practiceImage = following;
        ++m_next;
    }

    void readOutput(const QString& name, const std::optional<QString>& value) {
        auto file = value;
        if (!file && m_next < m_arguments.size()) {
            // "--output -- -odd-name.iso": the name that follows is meant as it stands.
            if (m_arguments.at(m_next) == QLatin1String("--") && m_next + 1 < m_arguments.size()) {
                m_optionsEnded = true;
                ++m_next;
                file = m_arguments.at(m_next++);
            } else if (!looksLikeOption(m_arguments.at(m_next))) {
                file = m_arguments.at(m_next++);
            }
        }
        if (!file || file->isEmpty()) {
            m_problem = QStringLiteral("The option “%1” needs the name of a file.").arg(name);
            return;
        }
        setOutput(*file);
    }

    void setOutput(const QString& file) {
        if (!m_invocation.output.isEmpty()) {
            m_problem = QStringLiteral("Only one file can be written at a time.");
        } else if (file == QLatin1String("-")) {
            m_problem = QStringLiteral(
                "The image is moved into place as a file; it cannot go to standard output.");
        } else {
            m_invocation.output = file;
        }
    }

    static bool holds(std::span<const OptionRow> rows, const OptionRow& row) {
        return std::ranges::any_of(rows, [&](const OptionRow& known) { return &known == &row; });
    }

    void check() {
        if (!m_command) {
            m_problem = QStringLiteral("No command was given.");
            return;
        }
        const CommandRow& row = CommandTable::row(*m_command);
        if (m_invocation.operands.size() > row.mostOperands) {
            m_problem =
                QStringLiteral("“%1” is one argument too many for “%2”.")
                    .arg(m_invocation.operands.at(row.mostOperands), QLatin1String(row.name));
            return;
        }
        for (const auto& [option, name] : m_taken) {
            if (!holds(CommandTable::commonOptions(), *option) && !holds(row.options, *option)) {
                m_problem =
                    QStringLiteral("“%1” has no option “%2”.").arg(QLatin1String(row.name), name);
                return;
            }
        }
        if (*m_command != Command::Rip) {
            return;
        }
        if (!m_invocation.operands.isEmpty()) {
            const QString file = m_invocation.operands.takeFirst();
            if (!file.isEmpty()) {
                setOutput(file);
            }
        }
        if (!m_problem && m_invocation.output.isEmpty()) {
            m_problem = QStringLiteral("“rip” needs the file to write: --output FILE.");
        }
    }

    QStringList m_arguments;
    qsizetype m_next = 0;
    bool m_optionsEnded = false;
    bool m_help = false;
    bool m_version = false;
    std::optional<Command> m_command;
    QList<std::pair<const OptionRow*, QString>> m_taken;  // and how they are called in a message
    Invocation m_invocation;
    std::optional<QString> m_problem;
};

}  // namespace

CommandArguments parseCommandArguments(const QByteArrayList& arguments) {
    QStringList decoded;
    for (const QByteArray& argument : arguments) {
        const QString text = QFile::decodeName(argument);
        // A name that does not survive the way through text would name another file.
        if (QFile::encodeName(text) != argument) {
            return UsageError{QStringLiteral("The argument “%1” is not valid text in this locale's "
                                             "encoding.")
                                  .arg(text),
                              std::nullopt};
        }
        decoded.append(text);
    }
    return Parser(std::move(decoded)).parse();
}
