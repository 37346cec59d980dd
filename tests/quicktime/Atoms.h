#pragma once

#include <QByteArray>

#include <cstdint>

namespace Tessaron::Testing
{

// QuickTime files byte by byte, for what no program writes any more, or never should have written.

QByteArray bigEndian16(std::uint32_t value);
QByteArray bigEndian32(std::uint32_t value);
QByteArray bigEndian64(std::uint64_t value);

/// Size, type and content.
QByteArray atom(const QByteArray &type, const QByteArray &content = {});

/// A sound description of version 0 with its header; what else goes into it comes behind.
QByteArray soundDescriptionAtom(const QByteArray &format, std::uint32_t channels, std::uint32_t bits,
                                std::uint32_t rate, std::uint32_t version = 0, const QByteArray &behind = {});
/// An image description with its header.
QByteArray imageDescriptionAtom(const QByteArray &codec, std::uint32_t width, std::uint32_t height,
                                const QByteArray &name, std::uint32_t frameCount = 1, std::uint32_t depth = 24);

/// A table of sizes that gives all samples the same one.
QByteArray equalSizes(std::uint32_t size, std::uint32_t count);

/// What a track of a movie is made of.
struct TrackParts {
    QByteArray mediaType = "soun";
    std::uint32_t id = 1;
    std::uint32_t duration = 1000; ///< in the movie's units, of which a second has 1000
    std::uint32_t mediaTimeScale = 44100;
    QByteArray description;
    QByteArray sizes; ///< the atom "stsz" or "stz2"
};
QByteArray trackAtom(const TrackParts &parts);

/// The atom "moov" of a movie of a second, with these atoms in it.
QByteArray movieAtom(const QByteArray &children, std::uint32_t duration = 1000);

/// A track of sound like that of a CD.
QByteArray plainSoundTrack();

} // namespace Tessaron::Testing
