#pragma once

#include <QByteArray>

#include <memory>

namespace Tessaron
{

class DRTrackProducer;

// What an image needs beside or behind its blocks, made when the blocks are in the file. Paths are bytes.

/// Where the cue sheet of an image lies: beside it, with the extension "cue" in place of its own.
[[nodiscard]] QByteArray pathOfCueSheet(const QByteArray &imagePath);

/// Writes the standard cue sheet of a BIN image. False when that fails; nothing is left of it then.
bool writeCueSheet(const QByteArray &imagePath);

/// Describes the image as one track of 2048-byte blocks, as many as the file holds whole ones, and appends the VANT
/// header to it. `producer` stands for the track and is not asked for data. False when the file's size is not known or
/// the header cannot be written; the file is left as it was then.
bool appendVANTHeader(const QByteArray &imagePath, const std::shared_ptr<DRTrackProducer> &producer);

} // namespace Tessaron
