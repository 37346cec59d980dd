#pragma once

#include "platform/dvdplayback/player/Deinterlacer.h"
#include "platform/dvdplayback/player/Navigator.h"
#include "platform/dvdplayback/player/Subpicture.h"
#include "platform/dvdplayback/player/VideoDecoder.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace Tessaron
{

/// A sub-picture, and the time of its packet; absent where the disc does not say.
struct Overlay {
    Subpicture subpicture;
    std::optional<std::int64_t> time;
};

/// Where the disc is, from that time on.
struct TimedPosition {
    NavigationPosition position;
    std::int64_t time = 0;
};

// Bars: nothing behind one is read before it is over.

/// The picture stands.
struct Still {
    std::optional<int> seconds; ///< absent: until the user acts
};
/// All that came is to be shown first.
struct Wait {
};
/// The disc has come to its end.
struct End {
};

/// Another button is selected, or there are other buttons.
struct ButtonChange {
};

/// What waits to be seen or told, in the order of the disc: first in a row of what was read, then in one of what is
/// decoded, so that what the disc says between its pictures is told when it is seen. Times are those of the line
/// (Timeline). One thread.
class PlaybackRows
{
public:
    using Item = std::variant<VideoPicture, TimedPosition, Overlay, Still, Wait, End, ButtonChange>;

    /// False when there are no decoders, or no memory.
    [[nodiscard]] bool open();
    /// What comes next is elsewhere on the disc.
    void forget();

    // What was read.

    void addVideo(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time);
    void add(Item item);
    void addBar(Item item);
    /// What follows does not follow on what came before.
    void addBreak();
    /// Of video, that is not decoded.
    [[nodiscard]] std::size_t bytesRead() const { return m_bytesRead; }
    /// The latest time of video that was read.
    [[nodiscard]] std::optional<std::int64_t> readTo() const { return m_readTo; }

    /// Decodes as many pictures ahead as are to be. `unitBegin` is the time of pictures that have none of their own.
    void decode(std::int64_t unitBegin);
    [[nodiscard]] bool canDecode() const;
    [[nodiscard]] bool isShortOfPictures() const;

    // What is decoded.

    /// Null where nothing waits.
    [[nodiscard]] Item *front() { return m_items.empty() ? nullptr : &m_items.front(); }
    void removeFront();
    [[nodiscard]] std::size_t pictures() const { return m_pictures; }

    // A bar stands at the end of all that waits.

    [[nodiscard]] bool isBarred() const { return m_isBarred; }
    /// It is over, and taken from the front.
    void lift() { m_isBarred = false; }
    /// Takes it away from the end; false for one of another kind.
    template <typename Bar>
    bool removeBar();

private:
    struct VideoBytes {
        std::vector<std::uint8_t> bytes;
        std::optional<std::int64_t> time;
    };
    struct Break {
    };
    using ReadItem = std::variant<VideoBytes, Break, Item>;

    void takePicture(VideoPicture picture, std::int64_t unitBegin);

    std::unique_ptr<VideoDecoder> m_video; ///< null before open()
    Deinterlacer m_deinterlacer;
    std::deque<ReadItem> m_read;
    std::size_t m_bytesRead = 0; ///< of video, among them
    std::optional<std::int64_t> m_readTo;
    std::deque<Item> m_items;
    std::size_t m_pictures = 0; ///< among them
    std::optional<std::int64_t> m_nextPicture; ///< when one without a time of its own is to be seen
    bool m_isBarred = false;
};

template <typename Bar>
bool PlaybackRows::removeBar()
{
    if (!m_isBarred)
        return false;
    if (!m_read.empty()) {
        const auto *const last = std::get_if<Item>(&m_read.back());
        if (!last || !std::holds_alternative<Bar>(*last))
            return false;
        m_read.pop_back();
    } else {
        if (m_items.empty() || !std::holds_alternative<Bar>(m_items.back()))
            return false;
        m_items.pop_back();
    }
    m_isBarred = false;
    return true;
}

} // namespace Tessaron
