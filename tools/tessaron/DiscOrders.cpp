#include "tools/tessaron/DiscOrders.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tools/tessaron/Text.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron::Tool
{

namespace
{

/// The codes of a text, one in a line.
Problem readIsrcs(const QByteArray &path, QList<QByteArray> *isrcs)
{
    if (path.isEmpty())
        return {};
    constexpr std::size_t longestText = 1 << 16; // 99 lines are some 1500 bytes
    const auto problem = [&path](const QString &reason) {
        return Problem{Problem::Kind::Source,
                       QStringLiteral("the ISRCs in %1 cannot be read: %2").arg(quoted(path), reason),
                       QStringLiteral("Name a text with one code in a line."), path};
    };
    const UniqueDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0)
        return problem(systemText(errno));
    if (!S_ISREG(status.st_mode))
        return problem(QStringLiteral("it is not a regular file"));
    QByteArray text(longestText, Qt::Uninitialized);
    std::size_t got = 0;
    if (const int failure = readFully(file.get(), 0, text.data(), longestText, &got))
        return problem(systemText(failure));
    if (got == longestText)
        return problem(QStringLiteral("it is far longer than 99 codes"));
    text.truncate(qsizetype(got));
    text.replace("\r\n", "\n");
    while (text.endsWith('\n'))
        text.chop(1);
    for (const QByteArray &line : text.split('\n'))
        *isrcs << line.trimmed();
    return {};
}

} // namespace

Problem setSoundOptions(AudioImageOrder *order, const Arguments &arguments)
{
    order->sources = arguments.paths;
    order->gap = arguments.gap;
    order->isGapless = arguments.isGapless;
    order->normalization = arguments.normalization;
    order->hasCDText = arguments.hasCDText;
    return readIsrcs(arguments.isrcFile, &order->isrcs);
}

} // namespace Tessaron::Tool
