#pragma once

#include "platform/quicktime/AtomSource.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
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
    std::uint64_t duration = 0; ///< of the track, in the movie's time scale; 0 where its header does not tell
    std::vector<MovieEdit> edits; ///< no more than a thousand
    QByteArray sampleDescription; ///< the first one with its size and its code, cut behind 64 KiB
    std::int64_t sizeOfDescription = 0; ///< bytes, with those
    std::optional<Atom> sampleTable; ///< where the atom "stbl" lies
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
    std::vector<MovieTrackAtoms> tracks; ///< no more than a thousand
    std::optional<GaplessInformation> gapless;

    [[nodiscard]] const MovieTrackAtoms *trackWithID(int id) const;
};

/// The atom "moov" and what it lies in: the file, or memory where the file has it compressed.
struct MovieTree {
    AtomSource *source = nullptr; ///< never null
    Atom movie;
    std::unique_ptr<AtomSource> inflated; ///< that source, where it is memory
};

/// Finds the atom "moov"; no value where the file has none, or one that cannot be decompressed. The file's atoms must
/// outlive the tree.
[[nodiscard]] std::optional<MovieTree> movieTreeOf(AtomSource &file);

/// Reads the atoms; no value when they make no movie. Any bytes end in one of the two.
[[nodiscard]] std::optional<MovieAtoms> movieAtomsOf(const MovieTree &tree);
[[nodiscard]] std::optional<MovieAtoms> movieAtomsOf(const MediaFile &file);

/// The place of the metadata list ("ilst") of an MP4 movie, inside of "udta" and "meta"; no value without one.
[[nodiscard]] std::optional<Atom> itemListOf(AtomSource &source, const Atom &parent);

} // namespace Tessaron
