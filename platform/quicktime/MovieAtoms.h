#pragma once

#include "platform/quicktime/MediaFile.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// An entry of an edit list: a run of the media that is played (QuickTime File Format, "Edit List Atoms"; ISO/IEC
/// 14496-12 8.6.6).
struct MovieEdit {
    std::int64_t duration = 0; ///< in the movie's time scale
    std::int64_t mediaTime = 0; ///< where it begins, in the media's time scale; -1 plays nothing
};

/// A track as its atoms describe it.
struct MovieTrackAtoms {
    std::uint32_t id = 0;
    QByteArray mediaType; ///< "soun", "vide" …
    std::uint32_t mediaTimeScale = 0; ///< ticks in a second
    std::uint64_t mediaDuration = 0; ///< ticks: the sum over all samples
    std::vector<MovieEdit> edits;
    QByteArray sampleDescription; ///< the first one, whole, with its size and its code
};

/// Runs of samples that the encoder says are padding (the item "iTunSMPB" that AAC encoders write).
struct GaplessInformation {
    std::int64_t delay = 0; ///< samples before the first one to be heard
    std::int64_t length = 0; ///< samples to be heard
};

/// What the atoms of a QuickTime or MP4 file say that FFmpeg's libraries round or keep to themselves.
struct MovieAtoms {
    std::uint32_t timeScale = 0; ///< ticks in a second
    std::uint64_t duration = 0;
    bool isFragmented = false; ///< the samples are described in pieces behind the "moov" atom
    std::vector<MovieTrackAtoms> tracks;
    std::optional<GaplessInformation> gapless;

    [[nodiscard]] const MovieTrackAtoms *trackWithID(int id) const;
};

/// Reads the atoms; no value when the file has no usable "moov" atom. Any bytes end in one of the two.
[[nodiscard]] std::optional<MovieAtoms> movieAtomsOf(const MediaFile &file);

} // namespace Tessaron
