#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace Sim {

/// Why something from outside (a file, a setting) can't be used: one sentence for people.
struct Failure
{
    QString text;
};

/// A value, or the failure that stands in its place.
template <typename T>
class [[nodiscard]] Outcome
{
public:
    Outcome(T value) : m_value(std::move(value)) {}
    Outcome(Failure failure) : m_failure(std::move(failure)) {}

    explicit operator bool() const { return m_value.has_value(); }
    T &operator*() { return *m_value; }
    const T &operator*() const { return *m_value; }
    T *operator->() { return &*m_value; }
    const T *operator->() const { return &*m_value; }
    /// Empty when there is a value.
    [[nodiscard]] const QString &error() const { return m_failure.text; }

private:
    std::optional<T> m_value;
    Failure m_failure;
};

} // namespace Sim
