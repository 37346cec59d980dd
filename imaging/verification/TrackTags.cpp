#include "imaging/verification/TrackTags.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

const CDTextBlock *blockToTake(const CDText &text)
{
    const auto english = std::ranges::find(text.blocks, CDTextBlock::english, &CDTextBlock::language);
    if (english != text.blocks.end())
        return &*english;
    return text.isEmpty() ? nullptr : &text.blocks.front();
}

QString textOf(const CDTextBlock &block, CDTextKind kind, std::size_t place)
{
    const auto texts = block.texts.find(kind);
    return texts == block.texts.end() || place >= texts->second.size() ? QString() : texts->second[place];
}

} // namespace

QMap<QString, QString> tagsOfTrack(const TableOfContents &disc, const DiscTrack &track)
{
    QMap<QString, QString> tags;
    const auto add = [&tags](const char *name, const QString &text) {
        if (!text.isEmpty())
            tags.insert(QString::fromLatin1(name), text);
    };
    add("isrc", QString::fromLatin1(track.isrc));
    const CDTextBlock *const block = blockToTake(disc.cdText);
    if (block && track.number >= block->firstTrack) {
        struct Name {
            CDTextKind kind;
            const char *name;
        };
        const std::size_t place = track.number - block->firstTrack + 1;
        for (const Name &known : {Name{CDTextKind::Title, "title"}, Name{CDTextKind::Performer, "artist"},
                                  Name{CDTextKind::Songwriter, "songwriter"}, Name{CDTextKind::Composer, "composer"},
                                  Name{CDTextKind::Arranger, "arranger"}, Name{CDTextKind::Message, "comment"}})
            add(known.name, textOf(*block, known.kind, place));
        add("album", textOf(*block, CDTextKind::Title, 0));
        add("album_artist", textOf(*block, CDTextKind::Performer, 0));
        add("genre", textOf(*block, CDTextKind::Genre, 0));
    }
    if (!tags.isEmpty()) {
        add("track", QString::number(track.number));
        add("tracktotal", QString::number(disc.trackCount()));
    }
    return tags;
}

} // namespace Tessaron
