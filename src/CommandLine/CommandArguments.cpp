#include "CommandArguments.h"

#include <QFile>
#include <array>
#include <utility>

namespace {

constexpr std::array<std::pair<Command, const char*>, 8> commandNames = {{
    {Command::Status, "status"},
    {Command::Rip, "rip"},
    {Command::SpeedTest, "speed-test"},
    {Command::History, "history"},
    {Command::Nickname, "nickname"},
    {Command::Eject, "eject"},
    {Command::Access, "access"},
    {Command::Settings, "settings"},
}};

std::optional<Command> commandFromName(const QString& name) {
    for (const auto& [command, text] : commandNames) {
        if (name == QLatin1String(text)) {
            return command;
        }
    }
    return std::nullopt;
}

qsizetype mostOperands(Command command) {
    switch (command) {
        case Command::Rip:
        case Command::Nickname:
            return 1;
        case Command::Settings:
            return 2;
        default:
            return 0;
    }
}

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
        m_command = commandFromName(argument);
        if (m_command) {
            m_invocation.command = *m_command;
        } else {
            m_problem = QStringLiteral("There is no command “%1”.").arg(argument);
        }
    }

    void readOption(const QString& argument) {
        if (argument == QLatin1String("--")) {
            m_optionsEnded = true;
            return;
        }
        const qsizetype equals =
            argument.startsWith(QLatin1String("--")) ? argument.indexOf(QLatin1Char('=')) : -1;
        const QString name = equals < 0 ? argument : argument.left(equals);
        const auto value = equals < 0 ? std::nullopt : std::optional(argument.mid(equals + 1));
        if (name == QLatin1String("--practice")) {
            readPractice(value);
        } else if (name == QLatin1String("--output") || name == QLatin1String("-o")) {
            readOutput(name, value);
        } else if (bool* flag = flagOf(name)) {
            if (value) {
                m_problem = QStringLiteral("The option “%1” takes no value.").arg(name);
                return;
            }
            *flag = true;
            if (flag == &m_invocation.thorough || flag == &m_invocation.eject ||
                flag == &m_invocation.force) {
                m_ripOptions.append(name);
            }
        } else {
            m_problem = QStringLiteral("There is no option “%1”.").arg(name);
        }
    }

    bool* flagOf(const QString& name) {
        const std::array<std::pair<const char*, bool*>, 8> flags = {{
            {"--json", &m_invocation.json},
            {"--help", &m_help},
            {"-h", &m_help},
            {"--version", &m_version},
            {"-V", &m_version},
            {"--thorough", &m_invocation.thorough},
            {"--eject", &m_invocation.eject},
            {"--force", &m_invocation.force},
        }};
        for (const auto& [text, flag] : flags) {
            if (name == QLatin1String(text)) {
                return flag;
            }
        }
        return nullptr;
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
            commandFromName(following)) {
            return;
        }
        m_invocation.practiceImage = following;
        ++m_next;
    }

    void readOutput(const QString& name, const std::optional<QString>& value) {
        m_ripOptions.append(name);
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

    void check() {
        if (!m_command) {
            m_problem = QStringLiteral("No command was given.");
            return;
        }
        const qsizetype most = mostOperands(*m_command);
        if (m_invocation.operands.size() > most) {
            m_problem = QStringLiteral("“%1” is one argument too many for “%2”.")
                            .arg(m_invocation.operands.at(most), commandName(*m_command));
            return;
        }
        if (*m_command != Command::Rip) {
            if (!m_ripOptions.isEmpty()) {
                m_problem = QStringLiteral("“%1” has no option “%2”.")
                                .arg(commandName(*m_command), m_ripOptions.constFirst());
            }
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
    QStringList m_ripOptions;
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

QString commandName(Command command) {
    for (const auto& [known, text] : commandNames) {
        if (known == command) {
            return QString::fromLatin1(text);
        }
    }
    Q_UNREACHABLE();
}
