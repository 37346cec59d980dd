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

constexpr std::chrono::milliseconds shortestInterval(100); // ten times a second is as fast as people read

QString nameOfPhase(ProgressState::Phase phase)
{
    switch (phase) {
    case ProgressState::Phase::Preparing:
    case ProgressState::Phase::Scanning:
        return QStringLiteral("scanning");
    case ProgressState::Phase::Planning:
        return QStringLiteral("planning");
    case ProgressState::Phase::Writing:
        return QStringLiteral("writing");
    case ProgressState::Phase::Comparing:
        return QStringLiteral("comparing");
    case ProgressState::Phase::Finishing:
        return QStringLiteral("finishing");
    case ProgressState::Phase::Done:
        return QStringLiteral("done");
    }
    return {};
}

class NoDisplay final : public ProgressDisplay
{
protected:
    void show(const ProgressState &) override { }
};

class JsonDisplay final : public ProgressDisplay
{
protected:
    void show(const ProgressState &state) override;
};

void JsonDisplay::show(const ProgressState &state)
{
    JsonWriter writer(STDERR_FILENO);
    writer.beginObject();
    writer.member("phase", nameOfPhase(state.phase));
    writer.key("percent");
    writer.value(shownPercent(), 1);
    writer.member("files", state.files);
    writer.member("folders", state.folders);
    writer.member("bytesWritten", state.bytesWritten);
    writer.member("bytesTotal", state.bytesTotal);
    if (const std::optional<double> bytesPerSecond = rate().bytesPerSecond())
        writer.member("bytesPerSecond", std::int64_t(std::llround(*bytesPerSecond)));
    const std::optional<std::chrono::seconds> remaining = rate().remaining(state.bytesTotal);
    if (remaining && state.countsBytes())
        writer.member("secondsLeft", std::int64_t(remaining->count()));
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

    void clear() override;

protected:
    void show(const ProgressState &state) override;

private:
    const bool m_isTerminal;
    qsizetype m_lineWidth = 0; ///< of what stands there now
};

void BarDisplay::show(const ProgressState &state)
{
    const int width = m_isTerminal ? terminalWidth(STDERR_FILENO) : 80;
    const QByteArray line = progressLine(state, shownPercent(), rate(), width - 1);
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

ProgressState stateOf(const DiscJobProgress &progress)
{
    ProgressState state;
    // Looking at the sources takes no time worth a word of its own.
    state.phase = progress.phase == DiscJobPhase::Preparing ? DiscJobPhase::Scanning : progress.phase;
    state.files = progress.files;
    state.folders = progress.folders;
    state.bytesWritten = progress.bytesDone;
    state.bytesTotal = progress.bytesTotal;
    return state;
}

double ProgressState::percent() const
{
    if (phase == Phase::Done)
        return 100;
    if (!countsBytes() || bytesTotal == 0)
        return 0;
    return std::min(std::floor(1000.0 * double(bytesWritten) / double(bytesTotal)) / 10, 99.9);
}

std::unique_ptr<ProgressDisplay> ProgressDisplay::create(ProgressMode mode, Verbosity verbosity)
{
    const bool wantsBar = mode == ProgressMode::Auto && verbosity != Verbosity::Quiet && canShowBar();
    if (mode == ProgressMode::Json)
        return std::make_unique<JsonDisplay>();
    if (mode == ProgressMode::Bar || wantsBar)
        return std::make_unique<BarDisplay>(canShowBar());
    return std::make_unique<NoDisplay>();
}

void ProgressDisplay::update(const ProgressState &state)
{
    const TransferRate::Time now = std::chrono::steady_clock::now();
    const bool isNewPhase = !m_hasShown || state.phase != m_lastPhase;
    if (!isNewPhase && now - m_lastShown < shortestInterval)
        return;
    m_hasShown = true;
    m_lastShown = now;
    m_lastPhase = state.phase;
    m_percent = std::max(m_percent, state.percent());
    if (state.countsBytes() && state.bytesTotal > 0)
        m_rate.add(now, state.bytesWritten);
    show(state);
}

} // namespace Tessaron::Tool
