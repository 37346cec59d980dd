#include "tools/tessaron/ProgressDisplay.h"

#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/ProgressBar.h"
#include "tools/tessaron/StandardStreams.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

/// Looking at the sources takes no time worth a word of its own.
QString nameOfPhase(DiscJobPhase phase)
{
    switch (phase) {
    case DiscJobPhase::Preparing:
    case DiscJobPhase::Scanning:
        return QStringLiteral("scanning");
    case DiscJobPhase::Planning:
        return QStringLiteral("planning");
    case DiscJobPhase::Measuring:
        return QStringLiteral("measuring");
    case DiscJobPhase::Writing:
        return QStringLiteral("writing");
    case DiscJobPhase::Comparing:
        return QStringLiteral("comparing");
    case DiscJobPhase::Finishing:
        return QStringLiteral("finishing");
    case DiscJobPhase::Done:
        return QStringLiteral("done");
    }
    return {};
}

class NoDisplay final : public ProgressDisplay
{
public:
    void show(const DiscJobProgress &, const std::vector<FileProgress> &) override { }
};

class JsonDisplay final : public ProgressDisplay
{
public:
    void show(const DiscJobProgress &progress, const std::vector<FileProgress> &files) override;
};

void JsonDisplay::show(const DiscJobProgress &progress, const std::vector<FileProgress> &files)
{
    JsonWriter writer(STDERR_FILENO);
    writer.beginObject();
    writer.member("phase", nameOfPhase(progress.phase));
    writer.key("percent");
    writer.value(progress.percent(), 1);
    writer.member("files", progress.files);
    writer.member("folders", progress.folders);
    writer.member("bytesWritten", progress.bytesDone);
    writer.member("bytesTotal", progress.bytesTotal);
    if (progress.bytesPerSecond)
        writer.member("bytesPerSecond", std::int64_t(std::llround(*progress.bytesPerSecond)));
    if (progress.remaining)
        writer.member("secondsLeft", std::int64_t(progress.remaining->count()));
    if (!files.empty()) {
        writer.key("running");
        writer.beginArray();
        for (const FileProgress &file : files) {
            writer.beginObject();
            writer.pathMember("source", file.path);
            writer.key("percent");
            writer.value(std::floor(1000 * file.fraction) / 10, 1);
            writer.endObject();
        }
        writer.endArray();
    }
    writer.endObject();
    // The command goes on when the reader of its progress has gone away.
    static_cast<void>(writer.finish());
}

class BarDisplay final : public ProgressDisplay
{
public:
    explicit BarDisplay(bool isTerminal)
        : m_isTerminal(isTerminal)
    {
    }
    ~BarDisplay() override { BarDisplay::clear(); }

    void show(const DiscJobProgress &progress, const std::vector<FileProgress> &files) override;
    void clear() override;

private:
    const bool m_isTerminal;
    qsizetype m_lineWidth = 0; ///< of what stands there now
};

void BarDisplay::show(const DiscJobProgress &progress, const std::vector<FileProgress> &files)
{
    const TerminalSize size = m_isTerminal ? terminalSize(STDERR_FILENO) : TerminalSize();
    const QByteArray line = progressLine(progress, size.columns - 1);
    // One write for all: it must not be torn apart by another program's output.
    QByteArray text = '\r' + line;
    if (m_isTerminal) {
        text += "\x1b[K";
        const std::size_t shown = std::min<std::size_t>(files.size(), std::size_t(std::max(size.rows - 2, 0)));
        for (std::size_t index = 0; index < shown; ++index)
            text += '\n' + fileProgressLine(files[index], size.columns - 1) + "\x1b[K";
        text += "\x1b[J"; // lines of files that are done
        if (shown > 0)
            text += "\x1b[" + QByteArray::number(qulonglong(shown)) + "A\r"; // back to the line of the whole
    } else {
        text += QByteArray(std::max<qsizetype>(m_lineWidth - line.size(), 0), ' ');
    }
    printToStandardError(text);
    m_lineWidth = line.size();
}

void BarDisplay::clear()
{
    if (m_lineWidth == 0)
        return;
    printToStandardError(m_isTerminal ? QByteArrayLiteral("\r\x1b[J") : '\r' + QByteArray(m_lineWidth, ' ') + '\r');
    m_lineWidth = 0;
}

bool canShowBar()
{
    return ::isatty(STDERR_FILENO) != 0 && qgetenv("TERM") != "dumb";
}

} // namespace

std::unique_ptr<ProgressDisplay> ProgressDisplay::create(ProgressMode mode, Verbosity verbosity)
{
    const bool wantsBar = mode == ProgressMode::Auto && verbosity != Verbosity::Quiet && canShowBar();
    if (mode == ProgressMode::Json)
        return std::make_unique<JsonDisplay>();
    if (mode == ProgressMode::Bar || wantsBar)
        return std::make_unique<BarDisplay>(canShowBar());
    return std::make_unique<NoDisplay>();
}

} // namespace Tessaron::Tool
