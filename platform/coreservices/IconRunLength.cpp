#include "platform/coreservices/IconFamilyFormat.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr qsizetype shortestRun = 3;
constexpr qsizetype longestRun = 130;
constexpr qsizetype longestLiteral = 128;
constexpr int runBias = 125;

qsizetype runLengthAt(const QByteArray &channel, qsizetype at)
{
    const qsizetype end = std::min(channel.size(), at + longestRun);
    qsizetype next = at + 1;
    while (next < end && channel[next] == channel[at])
        ++next;
    return next - at;
}

} // namespace

void appendRunLengthCoded(QByteArray &to, const QByteArray &channel)
{
    for (qsizetype at = 0; at < channel.size();) {
        const qsizetype run = runLengthAt(channel, at);
        if (run >= shortestRun) {
            to += static_cast<char>(run + runBias);
            to += channel[at];
            at += run;
            continue;
        }
        qsizetype end = at + run;
        while (end < channel.size() && end - at < longestLiteral && runLengthAt(channel, end) < shortestRun)
            ++end;
        to += static_cast<char>(end - at - 1);
        to += channel.mid(at, end - at);
        at = end;
    }
}

bool takeRunLengthCoded(QByteArrayView &from, qsizetype size, QByteArray &channel)
{
    channel.clear();
    channel.reserve(size);
    while (channel.size() < size) {
        if (from.size() < 2)
            return false;
        const int control = static_cast<unsigned char>(from.front());
        const bool isRun = control >= 0x80;
        const qsizetype count = isRun ? control - runBias : control + 1;
        const qsizetype used = isRun ? 1 : count;
        if (from.size() < used + 1 || count > size - channel.size())
            return false;
        if (isRun)
            channel.append(count, from[1]);
        else
            channel.append(from.sliced(1, count));
        from = from.sliced(used + 1);
    }
    return true;
}

} // namespace Tessaron
