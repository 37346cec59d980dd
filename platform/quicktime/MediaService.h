#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/MovieDescription.h"
#include "platform/quicktime/QTMovie.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <stop_token>
#include <vector>

namespace Tessaron
{

// What the media module does for the framework. Its types are values of both; a change to any of them, or to what they
// are made of, is a new interface number.

/// What opening finds out; see QTMovie.
struct MovieContents {
    QTTime duration;
    std::uint32_t soundRate = 0; ///< samples a second; 0 without sound
    std::vector<QTTrack> tracks;
};

class FlacEncoder;

/// The functions of the module. Any thread may call them.
struct MediaService {
    Result<MovieContents> (*openMovie)(const QByteArray &path, const std::stop_token &stop);
    Result<std::uint64_t> (*sizeOfTrack)(const QByteArray &path, std::size_t index, const std::stop_token &stop);
    NSError (*writeMovie)(const std::vector<QTSoundSegment> &segments, MovieStorage &storage,
                          const std::stop_token &stop);

    // See MovieDescription.h; for files that are not described by their atoms.
    Result<MovieDescription> (*describeMovie)(const QByteArray &path, const std::stop_token &stop);
    Result<QByteArray> (*pictureOfCover)(const QByteArray &path, const std::stop_token &stop);

    // See FlacFile. Each encoder that was begun is closed once.
    Result<FlacEncoder *> (*beginFlac)(MovieStorage &storage, const QMap<QString, QString> &tags);
    NSError (*writeFlac)(FlacEncoder &encoder, const char *bytes, std::size_t samples);
    NSError (*finishFlac)(FlacEncoder &encoder);
    void (*closeFlac)(FlacEncoder *encoder);
};

/// What a module says about itself. The first member stays where it is in every version.
struct MediaModuleDescription {
    std::uint32_t interfaceNumber;
    std::uint32_t sizeOfService; ///< bytes of MediaService
    const char *version; ///< of the framework that the module was built with
    const MediaService *service;
};

inline constexpr std::uint32_t mediaInterfaceNumber = 5;

/// The one symbol that a module exports, and what it is.
inline constexpr const char *mediaModuleEntryName = "tessaronMediaModule";
extern "C" using MediaModuleEntry = const MediaModuleDescription * ();

} // namespace Tessaron
