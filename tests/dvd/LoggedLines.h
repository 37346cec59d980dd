#pragma once

#include <QStringList>

#include <mutex>

namespace Tessaron::Testing
{

/// Gathers what is logged while it lives. One at a time.
class LoggedLines
{
public:
    LoggedLines()
    {
        s_current = this;
        m_before = qInstallMessageHandler(take);
    }
    ~LoggedLines()
    {
        qInstallMessageHandler(m_before);
        s_current = nullptr;
    }
    LoggedLines(const LoggedLines &) = delete;
    LoggedLines &operator=(const LoggedLines &) = delete;

    [[nodiscard]] QStringList lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    static void take(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text)
    {
        const std::lock_guard lock(s_current->m_mutex);
        s_current->m_lines << text;
    }

    static inline LoggedLines *s_current = nullptr;
    QtMessageHandler m_before = nullptr;
    mutable std::mutex m_mutex; ///< guards the next member
    QStringList m_lines;
};

} // namespace Tessaron::Testing
