#include "tools/tessaron/ProgressBar.h"

#include "tools/tessaron/Text.h"

#include <algorithm>
#include <cmath>
#include <sys/ioctl.h>

namespace Tessaron::Tool
{

namespace
{

constexpr int widestBar = 40;
constexpr int narrowestBar = 10;

QByteArray bar(double percent, int width)
{
    const auto filled = qsizetype(std::floor(percent / 100 * width));
    QByteArray result(filled, '=');
    if (filled < width)
        result += '>';
    return '[' + result.leftJustified(width) + ']';
}

QByteArray writingLine(const DiscJobProgress &progress, int width)
{
    const double percent = progress.percent();
    QList<QByteArray> parts = {QByteArray::number(int(percent)).rightJustified(3) + " %"};
    parts += (sizeText(progress.bytesDone) + QStringLiteral(" of ") + sizeText(progress.bytesTotal)).toUtf8();
    if (progress.bytesPerSecond)
        parts += sizeText(std::uint64_t(*progress.bytesPerSecond)).toUtf8() + "/s";
    if (progress.remaining)
        parts += durationText(*progress.remaining) + " left";
    while (parts.size() > 1 && parts.join("  ").size() > width)
        parts.removeLast();
    const QByteArray text = parts.join("  ");
    const int room = width - int(text.size()) - 3; // two brackets and a blank
    return room < narrowestBar ? text : bar(percent, std::min(room, widestBar)) + ' ' + text;
}

} // namespace

TerminalSize terminalSize(int descriptor)
{
    winsize size = {};
    const bool isKnown = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
    return isKnown ? TerminalSize{size.ws_col, size.ws_row} : TerminalSize();
}

QByteArray fileProgressLine(const FileProgress &file, int width)
{
    const QByteArray begin = QByteArray::number(int(100 * file.fraction)).rightJustified(5) + " %  ";
    const QString name = QString::fromUtf8(printable(lastComponent(file.path)));
    // Letters of East Asia, and what terminals show as such, take two columns.
    constexpr char16_t firstWide = 0x1100;
    qsizetype columns = begin.size(), length = 0;
    while (length < name.size() && columns + (name[length].unicode() < firstWide ? 1 : 2) <= width)
        columns += name[length++].unicode() < firstWide ? 1 : 2;
    if (length > 0 && name[length - 1].isHighSurrogate())
        --length;
    return begin + name.left(length).toUtf8();
}

QByteArray durationText(std::chrono::seconds duration)
{
    const auto total = duration.count();
    const QByteArray seconds = QByteArray::number(qlonglong(total % 60)).rightJustified(2, '0');
    const auto minutes = total / 60;
    if (minutes < 60)
        return QByteArray::number(qlonglong(minutes)) + ':' + seconds;
    return QByteArray::number(qlonglong(minutes / 60)) + ':'
        + QByteArray::number(qlonglong(minutes % 60)).rightJustified(2, '0') + ':' + seconds;
}

QByteArray progressLine(const DiscJobProgress &progress, int width)
{
    QByteArray result;
    const QByteArray found = (counted(progress.files, "file", "files") + QStringLiteral(", ")
                              + counted(progress.folders, "folder", "folders"))
                                 .toUtf8();
    switch (progress.phase) {
    case DiscJobPhase::Preparing:
    case DiscJobPhase::Scanning:
        result = "Scanning: " + found;
        break;
    case DiscJobPhase::Planning:
        result = "Planning: " + found;
        break;
    case DiscJobPhase::Measuring:
    case DiscJobPhase::Writing:
    case DiscJobPhase::Comparing:
    case DiscJobPhase::Finishing:
    case DiscJobPhase::Done:
        result = writingLine(progress, width);
        break;
    }
    return result.left(std::max(width, 0));
}

} // namespace Tessaron::Tool
