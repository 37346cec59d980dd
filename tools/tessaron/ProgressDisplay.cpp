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
    void show(const DiscJobProgress &) override { }
};

class JsonDisplay final : public ProgressDisplay
{
public:
    void show(const DiscJobProgress &progress) override;
};

void JsonDisplay::show(const DiscJobProgress &progress)
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

    void show(const DiscJobProgress &progress) override;
    void clear() override;

private:
    const bool m_isTerminal;
    qsizetype m_lineWidth = 0; ///< of what stands there now
};

void BarDisplay::show(const DiscJobProgress &progress)
{
    const int width = m_isTerminal ? terminalWidth(STDERR_FILENO) : 80;
    const QByteArray line = progressLine(progress, width - 1);
    // One write for the whole line: it must not be torn apart by another program's output.
    const QByteArray padded = line.leftJustified(std::max(m_lineWidth, line.size()));
    printToStandardError(m_isTerminal ? "\r" + line + "\x1b[K" : '\r' + padded);
    m_lineWidth = line.size();
}

void BarDisplay::clear()
{
    if (m_lineWidth == 0)
        return;
    printToStandardError(m_isTerminal ? QByteArrayLiteral("\r\x1b[K") : '\r' + QByteArray(m_lineWidth, ' ') + '\r');
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
