#pragma once

#include "tools/tessaron/Arguments.h"

namespace Tessaron::Tool
{

struct OptionDescription;

/// What of the options is not in Arguments as it stands: it means something only together with other words.
struct NamedOptions {
    bool hasFormat = false;
    bool hasTrack = false;
    bool takesFiles = false;
    QByteArray soundFormat; ///< empty where none was named
    int variableBitRate = 0; ///< kilobits a second; 0 where none was named
    int constantBitRate = 0;
    bool playsDVD = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

/// Takes one value after the other from the words of a command.
class OptionParser
{
public:
    OptionParser(const QList<QByteArray> &words, Arguments &arguments)
        : m_words(words)
        , m_arguments(arguments)
    {
    }

    /// Reads all words; false when one makes no sense (the usage error is set then).
    [[nodiscard]] bool parse();

    [[nodiscard]] const NamedOptions &named() const { return m_named; }

private:
    bool parseLongOption(const QByteArray &word);
    bool parseShortOptions(const QByteArray &word);
    bool apply(const OptionDescription &option, const QByteArray &shownName, const QByteArray &value);
    bool takeValue(const QByteArray &shownName, QByteArray *value);
    bool setProgress(const QByteArray &value);
    bool setFormat(const QByteArray &value);
    bool setSoundFormat(const QByteArray &value);
    bool setFilesystems(const QByteArray &value);
    bool setFilesystem(const QByteArray &value);
    bool setGap(const QByteArray &value);
    bool setCapacity(const QByteArray &value);
    bool setTrack(const QByteArray &value);
    bool setBitRate(const QByteArray &value, const QByteArray &shownName, int *rate);
    bool setJobs(const QByteArray &value);
    bool setNumber(const QByteArray &value, const char *what, std::uint16_t most, std::uint16_t *number);
    bool setSpeed(const QByteArray &value);
    bool setSplitCapacity(const QByteArray &value);
    bool fail(const QString &message);

    const QList<QByteArray> &m_words;
    qsizetype m_next = 0;
    Arguments &m_arguments;
    NamedOptions m_named;
};

} // namespace Tessaron::Tool
