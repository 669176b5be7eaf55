// The verdict of the verification that follows a rip, as a plain value. No verdict is an absent
// one.
#pragma once

#include <QString>

class VerifyStatus final {
public:
    enum class Kind { matched, mismatched, failed };

    static VerifyStatus matched() { return {Kind::matched, QString()}; }
    static VerifyStatus mismatched() { return {Kind::mismatched, QString()}; }
    static VerifyStatus failed(const QString& text) { return {Kind::failed, text}; }

    Kind kind() const { return m_kind; }
    const QString& text() const { return m_text; }  // the reason, of a failed one only

    bool operator==(const VerifyStatus&) const = default;

private:
    VerifyStatus(Kind kind, QString text) : m_kind(kind), m_text(std::move(text)) {}

    Kind m_kind;
    QString m_text;
};
