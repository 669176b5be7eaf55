// Why a rip failed, as a plain value with the sentence that the user reads.
#pragma once

#include <QString>

class RipError final {
public:
    enum class Kind { launchFailed, imagingFailed, permissionDenied };

    static RipError launchFailed(const QString& text) { return {Kind::launchFailed, text}; }
    static RipError imagingFailed(const QString& text) { return {Kind::imagingFailed, text}; }
    static RipError permissionDenied() { return {Kind::permissionDenied, QString()}; }

    Kind kind() const { return m_kind; }
    QString kindName() const;  // "launchFailed" and so on
    const QString& text() const { return m_text; }
    QString errorDescription() const;

    bool operator==(const RipError&) const = default;

private:
    RipError(Kind kind, QString text) : m_kind(kind), m_text(std::move(text)) {}

    Kind m_kind;
    QString m_text;
};
