#include <nlohmann/json.hpp>

#include "JsonText.h"
#include "Preferences.h"
#include "QuickCommands.h"
#include "Suggestion.h"

using Json = nlohmann::ordered_json;

namespace {

const PreferenceRow* rowNamed(const QString& name) {
    for (const PreferenceRow& row : preferenceTable) {
        if (name == QLatin1String(row.key)) {
            return &row;
        }
    }
    return nullptr;
}

std::optional<bool> truth(const QString& text) {
    const QString lower = text.toLower();
    if (lower == QLatin1String("true") || lower == QLatin1String("on")) {
        return true;
    }
    if (lower == QLatin1String("false") || lower == QLatin1String("off")) {
        return false;
    }
    return std::nullopt;
}

QString truthText(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

int complainAbout(const QString& problem, const CommandContext& context) {
    context.complain(problem);
    return ExitStatus::failed;
}

int showAll(const CommandContext& context, const Preferences& preferences) {
    if (const auto problem = preferences.problem()) {
        return complainAbout(*problem, context);
    }
    Json all = Json::object();
    QString lines;
    for (const PreferenceRow& row : preferenceTable) {
        const bool value = preferences.value(row.preference);
        all[row.key] = value;
        lines += QLatin1String(row.key) + QLatin1Char(' ') + truthText(value) + QLatin1Char('\n');
    }
    context.output.write(context.invocation.json ? JsonText::line(all) : lines.toUtf8());
    return ExitStatus::done;
}

}  // namespace

int QuickCommands::settings(const CommandContext& context) {
    const QStringList& operands = context.invocation.operands;
    Preferences preferences;
    if (operands.isEmpty()) {
        return showAll(context, preferences);
    }
    const PreferenceRow* row = rowNamed(operands.at(0));
    if (row == nullptr) {
        QStringList keys;
        for (const PreferenceRow& known : preferenceTable) {
            keys.append(QLatin1String(known.key));
        }
        context.complain(QStringLiteral("There is no setting “%1”.%2 The settings are: %3.")
                             .arg(operands.at(0), suggestion(operands.at(0), keys),
                                  keys.join(QLatin1String(", "))));
        return ExitStatus::usage;
    }
    if (operands.size() == 2) {
        const auto value = truth(operands.at(1));
        if (!value) {
            context.complain(QStringLiteral("“%1” is not a value of “%2”: true, false, on or off.")
                                 .arg(operands.at(1), operands.at(0)));
            return ExitStatus::usage;
        }
        preferences.set(row->preference, *value);
    }
    if (const auto problem = preferences.problem()) {
        return complainAbout(*problem, context);
    }
    const bool value = preferences.value(row->preference);
    if (context.invocation.json) {
        context.output.write(JsonText::line(Json{{row->key, value}}));
    } else if (operands.size() == 1) {
        context.output.write(truthText(value) + QLatin1Char('\n'));
    }
    return ExitStatus::done;
}
