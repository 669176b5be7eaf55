// Maker, model and firmware of a drive, as a plain value.
#pragma once

#include <QHashFunctions>
#include <QString>
#include <nlohmann/json_fwd.hpp>
#include <optional>

struct DriveIdentity {
    QString vendor;
    QString product;
    QString revision;

    // The fields that are not empty, joined with single blanks.
    QString modelString() const;

    // vendor|product|revision: the key of nicknames and of measured speeds.
    QString driveKey() const;

    // An object with the keys "vendor", "product" and "revision".
    nlohmann::ordered_json toJson() const;
    // Absent when a key is missing or not a string; other keys are ignored.
    static std::optional<DriveIdentity> fromJson(const nlohmann::ordered_json& json);

    bool operator==(const DriveIdentity&) const = default;
};

size_t qHash(const DriveIdentity& identity, size_t seed = 0);
