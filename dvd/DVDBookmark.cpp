#include "platform/dvdplayback/DVDPlayback.h"

#include <QtGlobal>

#include <TessaronClassesUI/DVDBookmark.h>

namespace Tessaron
{

namespace
{

bool isDone(OSStatus status, const char *function)
{
    if (status != noErr)
        qWarning("%s returned %d", function, int(status));
    return status == noErr;
}

} // namespace

std::shared_ptr<DVDBookmark> DVDBookmark::init()
{
    std::shared_ptr<DVDBookmark> bookmark(new DVDBookmark);
    std::uint32_t size = 0;
    if (!isDone(DVDGetBookmark(nullptr, &size), "DVDGetBookmark"))
        return bookmark;
    QByteArray data(qsizetype(size), '\0');
    if (isDone(DVDGetBookmark(data.data(), &size), "DVDGetBookmark"))
        bookmark->m_data = data.left(qsizetype(size));
    return bookmark;
}

void DVDBookmark::gotoBookmark() const
{
    static_cast<void>(isDone(DVDGotoBookmark(m_data.constData(), size()), "DVDGotoBookmark"));
}

} // namespace Tessaron
