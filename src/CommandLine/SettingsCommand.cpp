#include <array>
#include <nlohmann/json.hpp>

#include "JsonText.h"
#include "Preferences.h"
#include "QuickCommands.h"

using Json = nlohmann::ordered_json;

namespace {

struct Key {
    const char* name;
    bool (Preferences::*value)() const;
    void (Preferences::*set)(bool);
};

constexpr std::array<Key, 4> keys = {{
    {"ejectWhenDone", &Preferences::ejectWhenDone, &Preferences::setEjectWhenDone},
    {"thoroughVerify", &Preferences::thoroughVerify, &Preferences::setThoroughVerify},
    {"retroMode", &Preferences::retroMode, &Preferences::setRetroMode},
    {"hasCompletedOnboarding", &Preferences::hasCompletedOnboarding,
     &Preferences::setHasCompletedOnboarding},
}};

const Key* keyNamed(const QString& name) {
    for (const Key& key : keys) {
        if (name == QLatin1String(key.name)) {
            return &key;
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

int showAll(const CommandContext& context, const Preferences& preferences) {
    Json all = Json::object();
    QString lines;
    for (const Key& key : keys) {
        const bool value = (preferences.*key.value)();
        all[key.name] = value;
        lines += QLatin1String(key.name) + QLatin1Char(' ') + truthText(value) + QLatin1Char('\n');
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
    const Key* key = keyNamed(operands.at(0));
    if (key == nullptr) {
        context.complain(QStringLiteral("There is no setting “%1”. The settings are: "
                                        "ejectWhenDone, thoroughVerify, retroMode, "
                                        "hasCompletedOnboarding.")
                             .arg(operands.at(0)));
        return ExitStatus::usage;
    }
    if (operands.size() == 2) {
        const auto value = truth(operands.at(1));
        if (!value) {
            context.complain(QStringLiteral("“%1” is not a value of “%2”: true, false, on or off.")
                                 .arg(operands.at(1), operands.at(0)));
            return ExitStatus::usage;
        }
        (preferences.*key->set)(*value);
        if (!preferences.isSaved()) {
            context.complain(QStringLiteral("The setting could not be written."));
            return ExitStatus::failed;
        }
    }
    const bool value = (preferences.*key->value)();
    if (context.invocation.json) {
        context.output.write(JsonText::line(Json{{key->name, value}}));
    } else if (operands.size() == 1) {
        context.output.write(truthText(value) + QLatin1Char('\n'));
    }
    return ExitStatus::done;
}
