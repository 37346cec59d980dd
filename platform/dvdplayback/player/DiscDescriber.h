#pragma once

#include "platform/dvdplayback/DVDDescription.h"
#include "platform/dvdplayback/player/DiscFiles.h"
#include "platform/foundation/Result.h"

#include <chrono>

namespace Tessaron
{

/// Reads the tables of a disc. An error where the disc's own tables (VIDEO_TS.IFO and its copy) cannot be read; a title
/// set that cannot is the damage of its titles. A disc that is encrypted is described like any other.
[[nodiscard]] Result<DVDDescription> describeDisc(DiscFiles *disc);

/// A time of the tables, binary-coded decimal with the frame rate in the upper bits of the last byte; 0 for one that
/// makes no sense.
[[nodiscard]] std::chrono::milliseconds millisecondsOf(const dvd_time_t &time);

/// How long the cells from `first` to `last` (both from 1, both included) of a program chain play, along the first
/// angle. Cells that are not there take no time.
[[nodiscard]] std::chrono::milliseconds lengthOfCells(const pgc_t &chain, int first, int last);

/// The chain of that number, from 1; null without one.
[[nodiscard]] const pgc_t *chainOfNumber(const pgcit_t *chains, int number);

/// The first cell, from 1, of a program, from 1; 0 without one.
[[nodiscard]] int firstCellOfProgram(const pgc_t &chain, int program);

} // namespace Tessaron
