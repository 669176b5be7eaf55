// What a function gives: its value, or why there is none. A value like the one in it.
//
//     const auto drive = drives.drive("/dev/sr0", Wanted::Type);
//     if (!drive) { return drive.failure(); }
//     use(drive->vendor);
#pragma once

#include <concepts>
#include <optional>
#include <utility>
#include <variant>

#include "Failure.h"

template <typename Value>
class [[nodiscard]] Result final {
public:
    template <std::convertible_to<Value> Given>
    Result(Given&& value) : m_content(std::in_place_index<0>, std::forward<Given>(value)) {}
    Result(Failure failure) : m_content(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return m_content.index() == 0; }
    // Only of a success; throw std::bad_variant_access otherwise.
    Value& operator*() { return std::get<0>(m_content); }
    const Value& operator*() const { return std::get<0>(m_content); }
    Value* operator->() { return &**this; }
    const Value* operator->() const { return &**this; }

    // Only of a failure, likewise.
    const Failure& failure() const { return std::get<1>(m_content); }

    bool operator==(const Result&) const = default;

private:
    std::variant<Value, Failure> m_content;
};

// Of what has no value to give: Result<void>() is the success.
template <>
class [[nodiscard]] Result<void> final {
public:
    Result() = default;
    Result(Failure failure) : m_failure(std::move(failure)) {}

    explicit operator bool() const { return !m_failure; }
    const Failure& failure() const { return m_failure.value(); }

private:
    std::optional<Failure> m_failure;
};
