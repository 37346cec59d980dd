#include "fuzz/FuzzTarget.h"

#include "platform/dvdplayback/DVDBookmarkBytes.h"
#include "platform/dvdplayback/PlayerProtocol.h"

/// What a helper process that a disc has taken over could send, and bookmarks from anywhere.
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    if (const std::optional<DVDDescription> disc = decodedDescription(input)) {
        require(disc->titles.size() <= 99, "a disc has 99 titles at most");
        for (const DVDTitle &title : disc->titles)
            require(title.chapters.size() <= 999 && title.audio.size() <= 8 && title.subtitles.size() <= 32
                        && title.angles >= 1 && title.angles <= 9,
                    "a title keeps to the limits of the format");
        require(decodedDescription(encodedDescription(*disc)) == disc, "what was understood can be sent again");
    }
    if (const std::optional<PlayerState> state = decodedState(input))
        require(encodedState(*state) == input, "a state has one form");
    if (const std::optional<PlayerPlace> place = decodedPlace(input))
        require(encodedPlace(*place) == input, "a place has one form");
    static_cast<void>(decodedReply(input));
    const QByteArray disc("12345678");
    if (const std::optional<PlayerPlace> place = placeOfBookmark(input, disc))
        require(bookmarkBytes(disc, *place) == input, "a bookmark has one form");
    QByteArray stream = input;
    PlayerMessage message;
    qsizetype left = stream.size();
    while (takeMessage(&stream, &message) == StreamBegin::Message) {
        require(stream.size() < left, "a message takes bytes");
        left = stream.size();
    }
    return 0;
}
