// The JSON that --json prints: one object a line. Pure; any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "DriveIdentity.h"
#include "OpticalDisc.h"
#include "RipError.h"
#include "SpeedTestResult.h"
#include "VerifyStatus.h"

namespace JsonText {

// The value on one line, with a line feed; never fails.
QByteArray line(const nlohmann::ordered_json& value);

// {"property": name, "value": value}
nlohmann::ordered_json change(const char* property, nlohmann::ordered_json value);
// The same for an error: its description, and "case" with the kind's name while there is one.
nlohmann::ordered_json errorChange(const std::optional<RipError>& error);

// Absent is null in all of these.
nlohmann::ordered_json text(const std::optional<QString>& text);
nlohmann::ordered_json disc(const std::optional<OpticalDisc>& disc);
nlohmann::ordered_json drive(const std::optional<DriveIdentity>& drive);
nlohmann::ordered_json speedResult(const std::optional<SpeedTestResult>& result);
// "matched", "mismatched" or {"failed": text}
nlohmann::ordered_json verifyStatus(const std::optional<VerifyStatus>& status);

// A record of the history, with "multiple" and "nickname".
nlohmann::ordered_json historyEntry(const SpeedTestResult& result,
                                    const std::optional<QString>& nickname);

}  // namespace JsonText
