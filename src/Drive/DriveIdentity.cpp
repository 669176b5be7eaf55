#include "DriveIdentity.h"

#include <QStringList>
#include <nlohmann/json.hpp>

#include "StrictUtf8.h"

namespace {

std::optional<QString> text(const nlohmann::ordered_json& json, const char* key) {
    const auto found = json.find(key);
    if (found == json.end() || !found->is_string()) {
        return std::nullopt;
    }
    return wholeText(found->get_ref<const std::string&>());
}

}  // namespace

QString DriveIdentity::modelString() const {
    QStringList parts{vendor, product, revision};
    parts.removeAll(QString());
    return parts.join(QLatin1Char(' '));
}

QString DriveIdentity::driveKey() const {
    return QStringList{vendor, product, revision}.join(QLatin1Char('|'));
}

nlohmann::ordered_json DriveIdentity::toJson() const {
    return {{"vendor", vendor.toStdString()},
            {"product", product.toStdString()},
            {"revision", revision.toStdString()}};
}

std::optional<DriveIdentity> DriveIdentity::fromJson(const nlohmann::ordered_json& json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto vendor = text(json, "vendor");
    const auto product = text(json, "product");
    const auto revision = text(json, "revision");
    if (!vendor || !product || !revision) {
        return std::nullopt;
    }
    return DriveIdentity{*vendor, *product, *revision};
}

size_t qHash(const DriveIdentity& identity, size_t seed) {
    return qHashMulti(seed, identity.vendor, identity.product, identity.revision);
}
