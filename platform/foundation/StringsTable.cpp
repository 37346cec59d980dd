#include "platform/foundation/StringsTable.h"

#include <optional>

namespace Tessaron
{

namespace
{

/// Walks the text of a table. Every operation leaves the location after what it read.
class Reader
{
public:
    explicit Reader(const QString &text)
        : m_text(text)
    {
    }

    [[nodiscard]] bool isAtEnd() const { return m_at >= m_text.size(); }

    void skipBlanksAndComments()
    {
        while (!isAtEnd()) {
            if (m_text[m_at].isSpace())
                ++m_at;
            else if (startsWith(u"//"))
                skipLine();
            else if (startsWith(u"/*"))
                skipPast(u"*/");
            else
                return;
        }
    }

    void skipLine() { skipPast(u"\n"); }

    bool skipCharacter(QChar character)
    {
        skipBlanksAndComments();
        if (isAtEnd() || m_text[m_at] != character)
            return false;
        ++m_at;
        return true;
    }

    std::optional<QString> readQuoted()
    {
        if (!skipCharacter(u'"'))
            return {};
        QString result;
        while (!isAtEnd() && m_text[m_at] != u'"') {
            if (m_text[m_at] == u'\\' && m_at + 1 < m_text.size())
                result += readEscape();
            else
                result += m_text[m_at++];
        }
        if (isAtEnd())
            return {};
        ++m_at;
        return result;
    }

private:
    [[nodiscard]] bool startsWith(QStringView prefix) const { return QStringView(m_text).mid(m_at).startsWith(prefix); }

    void skipPast(QStringView ending)
    {
        const qsizetype found = QStringView(m_text).indexOf(ending, m_at);
        m_at = found < 0 ? m_text.size() : found + ending.size();
    }

    QChar readEscape()
    {
        ++m_at;
        const QChar kind = m_text[m_at++];
        if (kind == u'n')
            return u'\n';
        if (kind == u'r')
            return u'\r';
        if (kind == u't')
            return u'\t';
        if (kind == u'U') {
            bool isNumber = false;
            const ushort unit = QStringView(m_text).mid(m_at, 4).toUShort(&isNumber, 16);
            if (isNumber) {
                m_at += 4;
                return QChar(unit);
            }
        }
        return kind;
    }

    const QString &m_text;
    qsizetype m_at = 0;
};

} // namespace

QHash<QString, QString> parseStringsTable(const QByteArray &utf8)
{
    QHash<QString, QString> table;
    const QString text = QString::fromUtf8(utf8);
    Reader reader(text);
    for (reader.skipBlanksAndComments(); !reader.isAtEnd(); reader.skipBlanksAndComments()) {
        const std::optional<QString> key = reader.readQuoted();
        const std::optional<QString> value = key && reader.skipCharacter(u'=') ? reader.readQuoted() : std::nullopt;
        if (value && reader.skipCharacter(u';'))
            table.insert(*key, *value);
        else
            reader.skipLine();
    }
    return table;
}

} // namespace Tessaron
