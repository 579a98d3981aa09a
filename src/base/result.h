#pragma once

#include <QString>

#include <utility>
#include <variant>

namespace KEO {

/// What went wrong outside the program, for code (`kind`) and for people (`message`, one translated
/// sentence that says what failed, where, and what is allowed).
struct Error
{
    enum Kind {
        File,   ///< a file could not be opened, read or written
        Format, ///< the bytes are not what the format asks for
        Limit,  ///< well-formed, but larger than the program takes
        Link,   ///< a server could not be started or reached
        Usage   ///< the user asked for something that cannot be done
    };
    Kind kind = Format;
    QString message;
};

/// A value, or the reason why there is none.
template <typename T>
class [[nodiscard]] Result final
{
public:
    Result(T value) : m_content(std::move(value)) {}
    Result(Error error) : m_content(std::move(error)) {}

    explicit operator bool() const { return std::holds_alternative<T>(m_content); }
    const T &operator*() const & { return std::get<T>(m_content); }
    T &operator*() & { return std::get<T>(m_content); }
    T &&operator*() && { return std::get<T>(std::move(m_content)); }
    const T *operator->() const { return &std::get<T>(m_content); }
    T *operator->() { return &std::get<T>(m_content); }
    const Error &error() const { return std::get<Error>(m_content); }

private:
    std::variant<T, Error> m_content;
};

} // namespace KEO
