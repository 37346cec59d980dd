#pragma once

#include "platform/foundation/NSError.h"

#include <cassert>
#include <concepts>
#include <type_traits>
#include <utility>
#include <variant>

namespace Tessaron
{

/// The result of a function that can fail: a value, or the NSError that says why there is none. A function that has
/// nothing to return but can fail returns an NSError alone.
///
///     Result<Table> readTable(const QByteArray &bytes);
///
///     const Result<Table> table = readTable(bytes);
///     if (!table)
///         return table.error();
///     use(*table);
///
/// As thread-safe as the value in it. The value may be a type that can only be moved.
template <typename Value>
class [[nodiscard]] Result
{
    static_assert(!std::is_reference_v<Value> && !std::is_void_v<Value> && !std::is_same_v<Value, NSError>);

public:
    /// Success. Implicit, so that a function returns the value as it is.
    template <typename Other = Value>
    requires(
        std::constructible_from<Value, Other> &&std::convertible_to<
            Other,
            Value> && !std::same_as<std::remove_cvref_t<Other>, NSError> && !std::same_as<std::remove_cvref_t<Other>, Result>)
        // The constraint excludes Result itself, which the check for constructors that hide the copy does not see.
        Result(Other &&value) // NOLINT(bugprone-forwarding-reference-overload)
        : m_content(std::in_place_index<0>, std::forward<Other>(value))
    {
    }

    /// Failure. The null error means success and must not be passed.
    Result(NSError error)
        : m_content(std::in_place_index<1>, std::move(error))
    {
        assert(std::get<1>(m_content));
    }

    [[nodiscard]] bool hasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    /// The value; only when there is one.
    [[nodiscard]] Value &operator*() & { return *checkedValue(); }
    [[nodiscard]] const Value &operator*() const & { return *checkedValue(); }
    [[nodiscard]] Value &&operator*() && { return std::move(*checkedValue()); }
    [[nodiscard]] Value *operator->() { return checkedValue(); }
    [[nodiscard]] const Value *operator->() const { return checkedValue(); }

    /// The value, moved out, or `other` after a failure.
    template <typename Other>
    [[nodiscard]] Value valueOr(Other &&other) &&
    {
        return hasValue() ? std::move(*checkedValue()) : static_cast<Value>(std::forward<Other>(other));
    }

    /// Why there is no value; the null error when there is one.
    [[nodiscard]] NSError error() const { return hasValue() ? NSError() : std::get<1>(m_content); }

private:
    Value *checkedValue()
    {
        assert(hasValue());
        return std::get_if<0>(&m_content);
    }
    const Value *checkedValue() const
    {
        assert(hasValue());
        return std::get_if<0>(&m_content);
    }

    std::variant<Value, NSError> m_content;
};

} // namespace Tessaron
