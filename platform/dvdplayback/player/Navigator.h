#pragma once

#include "platform/dvdplayback/PlayerProtocol.h"
#include "platform/dvdplayback/player/DiscFiles.h"
#include "platform/dvdplayback/player/PacketSplitter.h"
#include "platform/dvdplayback/player/Subpicture.h"

extern "C" {
#include <dvdnav/dvdnav.h>
}

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>

namespace Tessaron
{

/// What users ask for, as discs can forbid it.
enum class UserOperation : std::uint8_t {
    TitleOrTimePlay,
    ChapterPlay,
    TitlePlay,
    Stop,
    TimeOrChapterSearch,
    PreviousProgram,
    NextProgram,
    ForwardScan,
    BackwardScan,
    TitleMenu, ///< the menus in the order of DVDMenuCode
    RootMenu,
    SubtitleMenu,
    AudioMenu,
    AngleMenu,
    ChapterMenu,
    Resume,
    Button,
    Pause,
    SoundStream,
    SubtitleStream,
    Angle,
};

/// What the next step through a disc has come to.
enum class NavigationStep : std::uint8_t {
    Sector, ///< of the program stream; sector() has it
    Position, ///< a navigation pack: position() is that of what follows
    Jump, ///< what follows does not follow on what came before
    Still, ///< the picture is to stand; stillSeconds() says how long
    Wait, ///< all that came is to be shown before the next step
    Stream, ///< another stream of subtitles or sound, or other colours
    Highlight, ///< another button is selected
    Stop, ///< the disc has come to its end
    Nothing,
    Failure, ///< failureText() says why
};

/// Where a disc is, at a navigation pack.
struct NavigationPosition {
    bool isInTitle = false; ///< else in a menu, or in nothing
    PlayerPlace place;
    std::uint32_t length = 0; ///< of the title, milliseconds
    std::uint16_t angles = 1;
    std::int16_t aspect = 0; ///< a DVDAspectRatio
    std::int16_t format = 0; ///< a DVDFormat
    std::uint8_t buttons = 0;
    std::uint8_t soundStreams = 0; ///< of the title
    std::uint8_t soundStream = 0; ///< from 1; 0 for none
    std::uint8_t subtitleStreams = 0;
    std::uint8_t subtitleStream = 0; ///< likewise
    std::uint32_t begin = 0; ///< presentation times of the unit, 90 kHz
    std::uint32_t end = 0;

    friend bool operator==(const NavigationPosition &, const NavigationPosition &) = default;
};

/// A stream of sound in the packs.
struct SoundStream {
    ElementaryKind kind = ElementaryKind::AC3;
    int number = 0; ///< within its kind

    friend bool operator==(const SoundStream &, const SoundStream &) = default;
};

/// Walks through a disc as its own commands and the user's want it. One thread. The library under it checks what its
/// caller does by assertions that end the process: this class keeps to what it allows.
class Navigator
{
public:
    [[nodiscard]] static Result<std::unique_ptr<Navigator>> open(DiscFiles *disc, const DVDDescription &description);
    ~Navigator();
    Navigator(const Navigator &) = delete;
    Navigator &operator=(const Navigator &) = delete;

    [[nodiscard]] NavigationStep next();
    [[nodiscard]] std::span<const std::uint8_t> sector() const { return {m_block.data(), m_block.size()}; }
    [[nodiscard]] const NavigationPosition &position() const { return m_position; }
    [[nodiscard]] std::optional<int> stillSeconds() const { return m_stillSeconds; } ///< absent: until the user acts
    [[nodiscard]] QString failureText() const;
    void skipStill();
    void skipWait();

    // Requests; kDVDErrorUserActionNoOp where they cannot be met. Each is to be followed by steps up to a Position
    // before the next one.

    [[nodiscard]] OSStatus playChapter(int title, int chapter);
    [[nodiscard]] OSStatus goToMenu(std::uint32_t menu);
    [[nodiscard]] OSStatus returnToTitle();
    [[nodiscard]] OSStatus setAngle(int angle);
    /// Streams as the tables list them, from 1; 0 for no subtitles. In titles only.
    [[nodiscard]] OSStatus chooseSound(int stream);
    [[nodiscard]] OSStatus chooseSubtitles(int stream);
    [[nodiscard]] OSStatus moveSelection(std::uint32_t navigation);
    /// The button at a point, from 0, or -1; selects it, and activates it.
    [[nodiscard]] std::int32_t pointAt(int x, int y, bool activates, bool *wasActivated);
    /// Milliseconds from the title's begin.
    [[nodiscard]] OSStatus searchTime(std::uint32_t milliseconds);
    [[nodiscard]] OSStatus searchSector(std::uint32_t sectorInTitle);

    /// True where the disc does not allow it now.
    [[nodiscard]] bool forbids(UserOperation operation) const;

    /// The selected button's place and colours; absent without one.
    [[nodiscard]] std::optional<ButtonColours> highlight(bool isActivated = false) const;
    [[nodiscard]] int selectedButton() const;
    [[nodiscard]] ColourTable colours() const { return m_colours; }
    /// The stream of sub-pictures to show, as the packs number it; absent for none. In menus there is always one.
    [[nodiscard]] std::optional<int> subpictureStream() const { return m_subpictureStream; }
    /// The stream of sound to play; absent where the disc has none.
    [[nodiscard]] std::optional<SoundStream> soundStream() const { return m_soundStream; }

private:
    static constexpr int noSubtitles = 62;

    Navigator(DiscFiles *disc, const DVDDescription &description);
    void takePosition();
    void takePicture();
    void takePlace();
    void takeSoundStream();
    [[nodiscard]] int numberOfSound(int chosen) const;
    [[nodiscard]] OSStatus chooseStreams(std::uint8_t sound, std::uint8_t subtitles);
    [[nodiscard]] bool isInMenu() const;
    [[nodiscard]] pci_t *buttons() const;
    [[nodiscard]] const ifo_handle_t *titleSet(int number);

    DiscFiles *const m_disc;
    const DVDDescription m_description;
    std::unique_ptr<dvdnav_t, FreeBy<dvdnav_close>> m_navigation;
    std::map<int, DiscTables> m_titleSets;
    std::array<std::uint8_t, 2048> m_block{};
    NavigationPosition m_position;
    int m_cell = 1;
    bool m_hasStarted = false; ///< a navigation pack was seen
    bool m_isAtEndOfCell = false; ///< where a still may stand, or is about to
    std::optional<int> m_stillSeconds;
    std::optional<int> m_subpictureStream;
    int m_chosenSubtitles = noSubtitles; ///< as the disc's commands count
    int m_chosenSound = 0; ///< as the disc's commands count, from 0
    std::optional<SoundStream> m_soundStream;
    ColourTable m_colours{};
};

} // namespace Tessaron
