#pragma once

#include <QString>

#include <cstdarg>

namespace Tessaron
{

/// Keeps the last line that a library has said about what is wrong, for errors; nothing is printed.
class LibraryLog
{
public:
    void add(const char *format, std::va_list arguments);
    /// Empty where nothing was said.
    [[nodiscard]] QString lastLine() const { return m_lastLine; }

private:
    QString m_lastLine;
};

} // namespace Tessaron
