#pragma once

#include "platform/dvdplayback/player/VideoDecoder.h"

#include <functional>
#include <optional>

namespace Tessaron
{

/// Makes whole pictures of interlaced ones, two of each: what was filmed 50 or 60 times a second is shown as often. The
/// lines that a half picture lacks are taken from the half pictures before and after it where nothing moves, and
/// interpolated between its own where something does (filters of BBC R&D, M. Weston's, with limits by what the
/// neighbours in time and space allow). Other pictures pass through as they are.
class Deinterlacer
{
public:
    using Visitor = std::function<void(VideoPicture)>;

    /// Takes the next picture; an interlaced one is given when the one behind it is known.
    void add(VideoPicture picture, const Visitor &visitor);
    /// No picture follows for now: gives the one that waits.
    void drain(const Visitor &visitor);
    /// What comes next does not follow on what came before.
    void forget();

private:
    void giveWaiting(const AVFrame &next, const Visitor &visitor);

    DecodedFrame m_previous; ///< null at the begin
    std::optional<VideoPicture> m_waiting;
};

} // namespace Tessaron
