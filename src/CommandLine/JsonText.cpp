#include "JsonText.h"

#include <nlohmann/json.hpp>
#include <utility>

using Json = nlohmann::ordered_json;

namespace {

Json number(const std::optional<qint64>& value) {
    return value ? Json(*value) : Json(nullptr);
}

// As the history shows it: to one decimal.
Json multiple(const SpeedTestResult& result) {
    QString text = speedMultipleText(result);
    text.chop(1);
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    return isNumber ? Json(value) : Json(nullptr);
}

}  // namespace

QByteArray JsonText::line(const Json& value) {
    return QByteArray::fromStdString(value.dump(-1, ' ', false, Json::error_handler_t::replace)) +
           '\n';
}

Json JsonText::change(const char* property, Json value) {
    return Json{{"property", property}, {"value", std::move(value)}};
}

Json JsonText::errorChange(const std::optional<RipError>& error) {
    Json result =
        change("error", text(error ? std::optional(error->errorDescription()) : std::nullopt));
    if (error) {
        result["case"] = error->kindName().toStdString();
    }
    return result;
}

Json JsonText::text(const std::optional<QString>& text) {
    return text ? Json(text->toStdString()) : Json(nullptr);
}

Json JsonText::disc(const std::optional<OpticalDisc>& disc) {
    if (!disc) {
        return nullptr;
    }
    return Json{{"bsdName", disc->bsdName.toStdString()},
                {"rawType", disc->rawType.toStdString()},
                {"kind", rawValue(disc->kind).toStdString()},
                {"volumeName", text(disc->volumeName)},
                {"totalBytes", number(disc->totalBytes)},
                {"imageSourceBSDName", disc->imageSourceBSDName.toStdString()},
                {"displayName", disc->displayName().toStdString()}};
}

Json JsonText::drive(const std::optional<DriveIdentity>& drive) {
    return drive ? drive->toJson() : Json(nullptr);
}

Json JsonText::speedResult(const std::optional<SpeedTestResult>& result) {
    return result ? result->toJson() : Json(nullptr);
}

Json JsonText::verifyStatus(const std::optional<VerifyStatus>& status) {
    if (!status) {
        return nullptr;
    }
    switch (status->kind()) {
        case VerifyStatus::Kind::matched:
            return "matched";
        case VerifyStatus::Kind::mismatched:
            return "mismatched";
        case VerifyStatus::Kind::failed:
            return Json{{"failed", status->text().toStdString()}};
    }
    Q_UNREACHABLE();
}

Json JsonText::historyEntry(const SpeedTestResult& result, const std::optional<QString>& nickname) {
    Json entry = result.toJson();
    entry["multiple"] = multiple(result);
    entry["nickname"] = text(nickname);
    return entry;
}
